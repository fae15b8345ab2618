// A plug-in of a host that does not know the library: it brings the library in and works with it.
#include <kvxdm/kvxdm.h>

/**
 * Makes a main object, has it refuse a document and an XMLMap, and ends it. No tree is made, since that would stay
 * behind. Whether both were read and refused for what they hold.
 */
extern "C" __attribute__((visibility("default"))) bool useLibrary(const char* map) {
  KvbString error;
  XDMMainPtr main(kvxdmCreateMain(0x80000000u));
  const bool loaded = main->loadFromXML(KvbString("<other><element name='a'/></other>", true), &error);
  const bool refused = !loaded && error.find(KvbString("XDM1425", true), 0) == 0;
  const bool imported = main->createFromXMLMap(KvbString(map, true), KvbString(), KvbString(), 0, &error);
  return refused && !imported && error.find(KvbString("XDM1448", true), 0) == 0;
}

// Where in an XMLMap a failed import stopped.
// Tested by tests/tool/xdm_map_test.cpp.
#ifndef XDM_MAP_PLACE_H
#define XDM_MAP_PLACE_H

#include <kvxdm/kvxdm.h>

#include <string>

/** An import that failed. */
struct FailedImport {
  std::string mapName;  // as the user gave it
  std::string path;
  std::string table;    // empty: the first one
  bool heading;         // whether the attributes of the HEADING were wanted
  std::string message;  // the library's text
};

/** "map.xml:12: column 'price': ..." for the failed import that left `main` behind; empty where it can't be known. */
std::string placeOfFailure(XDMMain& main, const FailedImport& import);

#endif

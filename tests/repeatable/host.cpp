// A host in the locale of its environment: prints every text that the library makes of one table of an XMLMap.
// scripts/check-repeatable compares what it prints.
#include <kvxdm/kvxdm.h>

#include <clocale>
#include <cstdio>
#include <initializer_list>

int main(int count, char** arguments) {
  if (count != 3 || !std::setlocale(LC_ALL, "")) return 2;
  KvbString error, xml;
  for (unsigned flags : {0u, 0x80000000u, 0x20000000u}) {
    XDMMainPtr model(kvxdmCreateMain(0x80000000u));
    if (!model->createFromXMLMap(KvbString(arguments[1], true), KvbString(arguments[2], true), KvbString(), flags,
                                 &error) ||
        !model->saveToXML(&xml, &error)) {
      std::fprintf(stderr, "%s\n", error.asCstr());
      return 1;
    }
    std::puts(model->genXQueryToColumns(false, true, true, false, &error).asCstr());
    std::puts(model->genXQueryFromColumns(true, true, &error).asCstr());
    std::puts(xml.asCstr());
    for (int i = 0; i < model->getSelectedColumns(); ++i) {
      XDMColumn* column = model->getSelectedColumn(i);
      std::printf("%s %s %d %d\n", column->getName().asCstr(), column->getFormat().asCstr(),
                  static_cast<int>(column->getType()), column->getMaximumLength());
    }
  }
}

// A small host: loads a model, selects a column and prints the query. Plain C++11.
#include <kvxdm/kvxdm.h>

#include <cstdio>

int main() {
  const char document[] =
      "<xdm version=\"1.0\"><element name=\"library\"><element name=\"book\"><element name=\"title\"/>"
      "</element></element></xdm>";
  KvbString error;
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->loadFromXML(KvbString(document, true), &error)) {
    std::fprintf(stderr, "%s\n", error.asCstr());
    return 1;
  }
  XDMElement* book = model->getRootNode()->getChild();
  book->setDecidesRow(true);
  if (!book->getChild()->selectAsColumn(KvbString("title", true), false)) return 1;
  const KvbString query = model->genXQueryToColumns(true, false, true, false, &error);
  std::printf("%s\n%s\n", kvx_build_info, query.asCstr());
  return query.length() > 0 ? 0 : 1;
}

// Prints the query that makes a document of rows, with the books of one subject gathered under one shelf again.
// It is compared with group_rows.xq; that query is then run over books.xml, and its result compared with
// group_rows.xml.
#include <cstdio>

#include <kvxdm/kvxdm.h>

namespace {

int fail(const KvbString& error) {
  std::fprintf(stderr, "group_rows: %s\n", error.asCstr());
  return 1;
}

void selectColumns(XDMElement* shelf) {
  const bool group = true;
  XDMElement* book = shelf->getChild();
  book->setDecidesRow(true);
  shelf->getNextAttribute(nullptr)->selectAsColumn(KvbString("subject", true), group);
  book->getNextAttribute(nullptr)->selectAsColumn(KvbString("isbn", true), !group);
  book->getChild()->selectAsColumn(KvbString("title", true), !group);
}

}  // namespace

int main(int argc, char** argv) {
  KvbString error;
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->loadFromFile(KvbString(argc > 1 ? argv[1] : "library.xdm", true), &error)) return fail(error);
  selectColumns(model->getRootNode()->getChild());

  const bool streaming = true;
  const bool groupRows = true;
  const KvbString query = model->genXQueryFromColumns(streaming, groupRows, &error);
  if (query.length() == 0) return fail(error);
  std::puts(query.asCstr());
  return 0;
}

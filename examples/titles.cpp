// A whole host in one page: loads a model, selects three columns and prints the query that turns documents into rows.
// Built against an installed library, run and compared with titles.xq by scripts/check-install.
#include <cstdio>

#include <kvxdm/kvxdm.h>

namespace {

int fail(const KvbString& error) {
  std::fprintf(stderr, "titles: %s\n", error.asCstr());
  return 1;
}

void selectColumns(XDMElement* shelf) {
  XDMElement* book = shelf->getChild();
  book->setDecidesRow(true);
  book->getNextAttribute(nullptr)->selectAsColumn(KvbString("isbn", true), false);
  book->getChild()->selectAsColumn(KvbString(), false);  // no name given: the column is named after the node
  shelf->getNextAttribute(nullptr)->selectAsColumn(KvbString("subject", true), false);
}

}  // namespace

int main(int argc, char** argv) {
  KvbString error;
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->loadFromFile(KvbString(argc > 1 ? argv[1] : "library.xdm", true), &error)) return fail(error);
  selectColumns(model->getRootNode()->getChild());

  KvbString query = model->genXQueryToColumns(true, false, true, false, &error);
  if (query.length() == 0) return fail(error);
  std::puts(query.asCstr());
  return 0;
}

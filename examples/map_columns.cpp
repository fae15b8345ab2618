// Imports a table of an XMLMap and describes its columns, as an application would to create a table of its own.
// What it prints is compared with map_columns.txt.
#include <cstdio>

#include <kvxdm/kvxdm.h>

namespace {

const char* nameOfType(kvbType type) {
  switch (type) {
    case 2:
      return "integer";
    case 3:
      return "floating-point number";
    case 4:
      return "character string";
    case 5:
      return "date and time";
    default:
      return "untyped";
  }
}

void printValidValues(XDMColumn* column) {
  std::printf("  one of:");
  for (int index = 0; index < column->getValidValues(); ++index) {
    std::printf(" '%s'", column->getValidValue(index).asCstr());
  }
  std::printf("\n");
}

void print(XDMColumn* column) {
  std::printf("%s: %s\n", column->getName().asCstr(), nameOfType(column->getType()));
  std::printf("  from %s\n", column->getXPath().asCstr());
  if (column->getMaximumLength() > 0) std::printf("  at most %d characters\n", column->getMaximumLength());
  if (column->getValidValues() > 0) printValidValues(column);
  if (column->getDefault().length() > 0) std::printf("  '%s' by default\n", column->getDefault().asCstr());
  if (column->getInformat().length() > 0) std::printf("  read as %s\n", column->getInformat().asCstr());
  if (column->getFormat().length() > 0) std::printf("  shown as %s\n", column->getFormat().asCstr());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: map_columns MAP TABLE\n");
    return 2;
  }
  KvbString error;
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->createFromXMLMap(KvbString(argv[1], true), KvbString(argv[2], true), KvbString(), 0, &error)) {
    std::fprintf(stderr, "map_columns: %s\n", error.asCstr());
    return 1;
  }
  for (int index = 0; index < model->getSelectedColumns(); ++index) print(model->getSelectedColumn(index));
  return 0;
}

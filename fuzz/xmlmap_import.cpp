// Imports a map. The input has the flags in its first line, the table in the second, the group-by string in the third,
// and the map behind. A second import must give the same: model, columns, messages and queries.
#include <kvxbase/kvboptions.h>

#include <cstdlib>
#include <string>

#include "input.h"
#include "memory_file.h"
#include "models.h"
#include "queries.h"
#include "xmlmap.h"

namespace {

struct Arguments {
  explicit Arguments(Input input)
      : flags(static_cast<unsigned>(std::strtoul(std::string(input.line()).c_str(), nullptr, 16))),
        table(input.line()),
        groupBy(input.line()) {
    // Collection variables are named at random otherwise.
    kvbSetConfigOption(kv("Bench"), kv(""));
    map.write(input.rest());
  }

  unsigned flags;
  std::string table;
  std::string groupBy;
  MemoryFile map;
};

std::string described(XDMColumn& column) {
  std::string text = str(column.getName()) + " " + str(column.getXPath()) + " " + str(column.getNode()->getXPath());
  for (const KvbString& each : {column.getFormat(), column.getInformat(), column.getDefault()}) text += "|" + str(each);
  for (int i = 0; i < column.getValidValues(); ++i) text += "|" + str(column.getValidValue(i));
  for (int each : {column.getType(), column.getMaximumLength(), column.getIsGroupBy()})
    text += " " + std::to_string(each);
  return text + "\n";
}

std::string described(XDMMain& main) {
  XDMElement* root = main.getRootNode();
  std::string text = root ? outline(root) + "\n" + declarations(root) + "\n" : "";
  for (int i = 0; i < main.getSelectedColumns(); ++i) text += described(*main.getSelectedColumn(i));
  return text;
}

/** One import, and all that came of it in a text. */
std::string imported(const Arguments& arguments) {
  MainPtr main = makeMain(arguments.flags);
  KvbString error;
  const bool succeeded = main->createFromXMLMap(kv(arguments.map.path()), kv(arguments.table), kv(arguments.groupBy),
                                                arguments.flags, &error);
  EXPECT_TRUE(!succeeded || error.isNull()) << str(error);
  EXPECT_TRUE(!succeeded || main->getSelectedColumns() > 0);
  const std::string model = described(*main);
  const std::string texts = str(error) + "\n" + model + queries(*main, arguments.flags);
  EXPECT_EQ(described(*main), model);
  if (main->root()) expectSavesTheSame(*main);
  return texts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Arguments arguments{Input(data, size)};
  const std::string first = imported(arguments);
  EXPECT_EQ(imported(arguments), first);
  return 0;
}

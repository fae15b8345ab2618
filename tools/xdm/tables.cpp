// `xdm tables`.
// Tested by tests/tool/xdm_map_test.cpp.
#include <kvxdom/kvdom.h>

#include "commands.h"
#include "diagnostics.h"
#include "sources.h"
#include "text.h"

void printTables(const Options& options, Output& output) {
  const std::string& path = options.model.path;
  if (path == "-") throw Failure("standard input is read as an XDM document, which has no tables");
  KvDom map;
  if (!map.loadFile(toKvb(path))) throw Failure("cannot read the XMLMap '" + path + "': " + reasonOf(map, path));
  std::string root = toStd(map.getRoot().getName());
  if (root != "ROWMAPS")
    throw Failure("'" + path + "' is not an XMLMap: its root element is " + root + ", not ROWMAPS");
  for (KvDomNode node = map.getRoot().getFirstChild(false); !node.null(); node = node.getNextSibling(false)) {
    std::string name = toStd(node.getAttributeValue(KvbString("name", true)));
    // A table without a name can't be asked for by one.
    if (toStd(node.getName()) == "TABLE" && !name.empty()) output.write(name + "\n");
  }
}

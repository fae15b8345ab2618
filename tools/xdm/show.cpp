// `xdm show`.
// Tested by tests/tool/xdm_show_test.cpp.
#include <map>
#include <vector>

#include "commands.h"
#include "html.h"
#include "model.h"
#include "sources.h"
#include "text.h"

namespace {

using ColumnsByNode = std::map<XDMNode*, std::vector<XDMColumn*>>;

ColumnsByNode columnsByNode(XDMMain& main) {
  ColumnsByNode columns;
  for (XDMColumn* column : columnsOf(main)) columns[column->getNode()].push_back(column);
  return columns;
}

std::string columnMark(XDMColumn* column) {
  std::string mark = "  [column " + toStd(column->getName()) + ": " + typeName(column->getType());
  if (column->getMaximumLength() != 0) mark.append("(").append(std::to_string(column->getMaximumLength())).append(")");
  if (column->getIsGroupBy() != 0) mark += ", group " + std::to_string(column->getIsGroupBy());
  return mark + "]";
}

std::string columnMarks(XDMNode* node, const ColumnsByNode& columns) {
  std::string marks;
  auto found = columns.find(node);
  if (found == columns.end()) return marks;
  for (XDMColumn* column : found->second) marks += columnMark(column);
  return marks;
}

std::string indent(int level) { return std::string(2 * static_cast<std::size_t>(level), ' '); }

}  // namespace

void showModel(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  ColumnsByNode columns = columnsByNode(*main);
  for (ElementWalk walk(main->getRootNode()); walk.element(); walk.next()) {
    XDMElement* element = walk.element();
    const char* row = element->getDecidesRow() ? "  [row]" : "";
    output.write(indent(walk.level()) + qualifiedName(element) + row + columnMarks(element, columns) + "\n");
    for (XDMAttribute* at = nullptr; (at = element->getNextAttribute(at));) {
      output.write(indent(walk.level() + 1) + "@" + qualifiedName(at) + columnMarks(at, columns) + "\n");
    }
  }
}

void showPage(const Options& options, Output& output) {
  output.write(htmlPage(*openModel(options.model), titleOf(options.model.path)));
}

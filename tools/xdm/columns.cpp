// `xdm columns`.
// Tested by tests/tool/xdm_columns_test.cpp.
#include <algorithm>
#include <string>
#include <vector>

#include "columns.h"
#include "commands.h"
#include "csv.h"
#include "model.h"
#include "text.h"

namespace {

/** What is printed of one column. */
struct ColumnFacts {
  std::string name;
  std::string xpath;
  std::string kind;
  std::string type;
  int maximumLength;
  int groupBy;
  std::string format;
  std::string informat;
  std::string defaultValue;
  std::vector<std::string> validValues;
};

const std::vector<std::string> keys = {"name",    "xpath",  "kind",     "type",    "maximumLength",
                                       "groupBy", "format", "informat", "default", "validValues"};

ColumnFacts factsOf(XDMColumn& column) {
  ColumnFacts facts = {toStd(column.getName()),
                       toStd(column.getXPath()),
                       column.getNode()->nodeType() != 0 ? "element" : "attribute",
                       typeName(column.getType()),
                       column.getMaximumLength(),
                       column.getIsGroupBy(),
                       toStd(column.getFormat()),
                       toStd(column.getInformat()),
                       toStd(column.getDefault()),
                       {}};
  for (int i = 0; i < column.getValidValues(); ++i) facts.validValues.push_back(toStd(column.getValidValue(i)));
  return facts;
}

std::string joined(const std::vector<std::string>& values) {
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : "|") + value;
  return text;
}

std::vector<std::string> cellsOf(const ColumnFacts& facts) {
  return {facts.name,
          facts.xpath,
          facts.kind,
          facts.type,
          std::to_string(facts.maximumLength),
          std::to_string(facts.groupBy),
          facts.format,
          facts.informat,
          facts.defaultValue,
          joined(facts.validValues)};
}

nlohmann::ordered_json jsonOf(const ColumnFacts& facts) {
  return {{keys[0], facts.name},       {keys[1], facts.xpath},         {keys[2], facts.kind},
          {keys[3], facts.type},       {keys[4], facts.maximumLength}, {keys[5], facts.groupBy},
          {keys[6], facts.format},     {keys[7], facts.informat},      {keys[8], facts.defaultValue},
          {keys[9], facts.validValues}};
}

std::string jsonText(XDMMain& main) {
  return columnsJson(main).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

using Cells = std::vector<std::vector<std::string>>;

Cells tableOf(XDMMain& main) {
  Cells cells = {keys};
  for (XDMColumn* column : columnsOf(main)) cells.push_back(cellsOf(factsOf(*column)));
  return cells;
}

std::string csvText(const Cells& cells) {
  std::string text;
  for (const auto& line : cells) text += csvLine(line);
  return text;
}

std::vector<std::size_t> widthsOf(const Cells& cells) {
  std::vector<std::size_t> widths(keys.size(), 0);
  for (const auto& line : cells) {
    for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], characters(line[i]));
  }
  return widths;
}

std::string alignedLine(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    line += cells[i] + std::string(widths[i] - characters(cells[i]) + 2, ' ');
  }
  line.erase(line.find_last_not_of(' ') + 1);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return line + "\n";
}

std::string alignedText(const Cells& cells) {
  std::string text;
  std::vector<std::size_t> widths = widthsOf(cells);
  for (const auto& line : cells) text += alignedLine(line, widths);
  return text;
}

}  // namespace

nlohmann::ordered_json columnsJson(XDMMain& main) {
  nlohmann::ordered_json columns = nlohmann::ordered_json::array();
  for (XDMColumn* column : columnsOf(main)) columns.push_back(jsonOf(factsOf(*column)));
  return columns;
}

void printColumns(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  if (options.format == "json") {
    output.write(jsonText(*main));
  } else {
    output.write(options.format == "csv" ? csvText(tableOf(*main)) : alignedText(tableOf(*main)));
  }
}

// What others make of the same bytes: plain trees of pugixml and libxml2, held against the same floor as the library.
#include <memory>

#include "case.h"
#include "floors.h"
#include "shapes.h"

namespace {

struct Parser {
  std::string name;
  void (*parse)(const std::string& text);
};

const Parser parsers[] = {{"pugixml", parseWithPugixml}, {"libxml2", parseWithLibxml2}};

Case parseCase(const Parser& parser, Document document) {
  auto text = std::make_shared<std::string>(std::move(document.text));
  return {.items = document.nodes, .work = [=] { parser.parse(*text); }, .floor = [=] { scan(*text); }};
}

void addParser(Workloads* workloads, const Parser& parser, const DocumentShape& shape) {
  workloads->push_back({.name = parser.name + "/" + shape.name,
                        .meaning = "a plain tree of " + parser.name + ", for comparison: " + shape.meaning,
                        .reach = 0,
                        .sizes = shape.sizes,
                        .at = [=](long size) { return parseCase(parser, shape.document(size)); }});
}

Document mapAsDocument(long columns) { return {wideMap(columns, PathSyntax::plain), columns}; }

}  // namespace

void addParsers(Workloads* workloads) {
  const DocumentShape map = {"map", "a map with columns side by side", mapSizes, mapAsDocument};
  for (const Parser& parser : parsers) {
    for (const DocumentShape& shape : documentShapes()) addParser(workloads, parser, shape);
    addParser(workloads, parser, map);
  }
}

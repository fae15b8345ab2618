// Marking and writing queries. The floor writes the bytes of the very query that the library returns.
#include <memory>

#include "case.h"
#include "floors.h"
#include "model.h"
#include "shapes.h"
#include "temporary.h"

namespace {

using Generate = std::function<KvbString(XDMMain& model)>;

struct Query {
  KvbString text;
  std::vector<std::string_view> tokens;

  explicit Query(KvbString query) : text(query), tokens(tokensOf({text.asCstr(), std::size_t(text.length())})) {}
};

Case queryCase(std::shared_ptr<XDMMain> model, long columns, const Generate& generate) {
  auto query = std::make_shared<Query>(generate(*model));
  return {
      .items = columns, .work = [=] { keep(generate(*model).length()); }, .floor = [=] { appendAll(query->tokens); }};
}

std::shared_ptr<XDMMain> importText(const std::string& map, const std::string& groupBy) {
  TemporaryFolder folder;
  return importMap(folder.write("map.xml", map), groupBy);
}

KvbString plainFromRowsQuery(XDMMain& model) { return fromRowsQuery(model, false); }
KvbString groupedFromRowsQuery(XDMMain& model) { return fromRowsQuery(model, true); }

void addQuery(Workloads* workloads, const std::string& kind, double reach, const MapShape& shape,
              const Generate& generate, const std::string& groupBy = "") {
  workloads->push_back(
      {.name = kind + "/" + shape.name,
       .meaning = "the query, " + shape.meaning,
       .reach = reach,
       .sizes = shape.sizes,
       .at = [=](long size) { return queryCase(importText(shape.map(size), groupBy), size, generate); }});
}

}  // namespace

void addQueries(Workloads* workloads) {
  for (const MapShape& shape : mapShapes()) addQuery(workloads, "to-rows", 6, shape, toRowsQuery);
  for (const MapShape& shape : mapShapes()) addQuery(workloads, "from-rows", 8, shape, plainFromRowsQuery);
  const MapShape grouped = {"grouped", "columns side by side in two group loops", mapSizes, groupedMap};
  addQuery(workloads, "from-rows", 8, grouped, groupedFromRowsQuery, "a=g1 b=g2");
}

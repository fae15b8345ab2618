// Importing XMLMaps.
#include <memory>

#include "case.h"
#include "floors.h"
#include "model.h"
#include "shapes.h"
#include "temporary.h"

namespace {

struct MapFile {
  TemporaryFolder folder;
  std::string text;
  std::string path;

  explicit MapFile(std::string map) : text(std::move(map)), path(folder.write("map.xml", text)) {}
};

Case importCase(std::string map, long columns) {
  auto file = std::make_shared<MapFile>(std::move(map));
  return {.items = columns, .work = [=] { importMap(file->path); }, .floor = [=] { scan(file->text); }};
}

}  // namespace

void addImports(Workloads* workloads) {
  for (const MapShape& shape : mapShapes()) {
    workloads->push_back({.name = "import/" + shape.name,
                          .meaning = "import a map, " + shape.meaning,
                          .reach = 3,
                          .sizes = shape.sizes,
                          .at = [=](long size) { return importCase(shape.map(size), size); }});
  }
}

// Loading an XDM document and saving it.
#include <memory>

#include "case.h"
#include "floors.h"
#include "model.h"
#include "shapes.h"
#include "temporary.h"

namespace {

Case loadCase(Document made) {
  auto document = std::make_shared<Document>(std::move(made));
  KvbString text = kv(document->text);
  return {.items = document->nodes, .work = [text] { loadModel(text); }, .floor = [document] { scan(document->text); }};
}

/** The file that is written comes back byte for byte, so floor and work write as much. */
Case saveCase(const Document& document) {
  auto folder = std::make_shared<TemporaryFolder>();
  std::shared_ptr<XDMMain> model = loadModel(kv(document.text));
  auto save = [=] {
    KvbString error;
    require(model->saveToFile(kv(folder->file("model.xdm")), &error), error);
  };
  save();
  require(readFile(folder->file("model.xdm")) == document.text, kv("the saved document is not the one loaded"));
  return {.items = document.nodes, .work = save, .floor = [=, text = withoutEscapes(document.text)] {
            writeEscaped(text, folder->file("floor.xdm"));
          }};
}

}  // namespace

void addLoading(Workloads* workloads) {
  for (const DocumentShape& shape : documentShapes()) {
    workloads->push_back({.name = "load/" + shape.name,
                          .meaning = "load an XDM document, " + shape.meaning,
                          .reach = 3,
                          .sizes = shape.sizes,
                          .at = [=](long size) { return loadCase(shape.document(size)); }});
  }
}

void addSaving(Workloads* workloads) {
  for (const DocumentShape& shape : documentShapes()) {
    workloads->push_back({.name = "save/" + shape.name,
                          .meaning = "save it to a file",
                          .reach = 3,
                          .sizes = shape.sizes,
                          .at = [=](long size) { return saveCase(shape.document(size)); }});
  }
}

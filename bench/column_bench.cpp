// Selecting, editing and listing columns.
#include <memory>

#include "case.h"
#include "floors.h"
#include "model.h"
#include "workloads.h"

namespace {

/** A model of which every node becomes a column. */
class Columns {
 public:
  explicit Columns(const Document& document) : document_(kv(document.text)) {}

  void loadAfresh() {
    model_ = loadModel(document_);
    nodes_ = nodesOf(*model_);
    if (names_.empty()) nameAll();
  }

  void selectNamed() {
    selectAll([this](std::size_t i) { return names_[i]; });
  }
  void selectUnnamed() {
    selectAll([](std::size_t) { return KvbString(); });
  }

  void edit() {
    for (int i = 0; i < model_->getSelectedColumns(); ++i) editColumn(model_->getSelectedColumn(i));
  }

  void list() const {
    long sum = 0;
    for (int i = 0; i < model_->getSelectedColumns(); ++i) sum += readColumn(model_->getSelectedColumn(i));
    keep(sum);
  }

  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (int i = 0; i < model_->getSelectedColumns(); ++i)
      names.push_back(str(model_->getSelectedColumn(i)->getName()));
    return names;
  }

 private:
  void nameAll() {
    for (std::size_t i = 0; i < nodes_.size(); ++i) names_.push_back(kv(numbered("column", static_cast<long>(i))));
  }

  template <class Name>
  void selectAll(const Name& name) {
    for (std::size_t i = 0; i < nodes_.size(); ++i) {
      if (!nodes_[i]->selectAsColumn(name(i), false)) throw std::runtime_error("a column was not selected");
    }
  }

  void editColumn(XDMColumn* column) const {
    KvbString error;
    column->setFormat(format_);
    column->setInformat(format_);
    column->setIsGroupBy(true);
    column->setMaximumLength(32);
    column->setName(column->getName());
    column->setType(4);
    require(column->addValidValue(value_, &error), error);
    require(column->setDefault(value_, &error), error);
    require(column->setXPath(column->getXPath(), &error), error);
  }

  static long readColumn(XDMColumn* column) {
    const KvbString strings[] = {column->getDefault(), column->getFormat(),      column->getInformat(),
                                 column->getName(),    column->getValidValue(0), column->getXPath()};
    long sum = column->getIsGroupBy() + column->getMaximumLength() + column->getType() + column->getValidValues() +
               (column->getNode() != nullptr);
    for (const KvbString& string : strings) sum += string.length();
    return sum;
  }

  const KvbString document_;
  const KvbString format_ = kv("DATE9.");
  const KvbString value_ = kv("none");
  XDMMainPtr model_;
  std::vector<XDMNode*> nodes_;
  std::vector<KvbString> names_;
};

using Step = void (*)(Columns& columns);

struct Stage {
  std::string name;
  std::string meaning;
  Document (*document)(long elements);
  Step before;  // goes behind loading, unmeasured
  Step work;
};

void nothing(Columns&) {}
void selectNamed(Columns& columns) { columns.selectNamed(); }
void selectUnnamed(Columns& columns) { columns.selectUnnamed(); }
void edit(Columns& columns) { columns.edit(); }
void list(Columns& columns) { columns.list(); }

const Stage stages[] = {
    {"named", "select every node under a name of its own", wideDocument, nothing, selectNamed},
    {"unnamed", "select every node without a name, most share theirs", bushyDocument, nothing, selectUnnamed},
    {"edit", "call every setter of every column", wideDocument, selectNamed, edit},
    {"list", "read every column", wideDocument, selectNamed, list}};

Case columnCase(const Stage& stage, const Document& document) {
  auto columns = std::make_shared<Columns>(document);
  const auto prepare = [=] {
    columns->loadAfresh();
    stage.before(*columns);
  };
  const auto work = [=] { stage.work(*columns); };
  prepare();
  work();
  return {.items = document.nodes,
          .work = work,
          .floor = [names = columns->names()] { insertAll(names); },
          .prepare = prepare};
}

}  // namespace

void addColumns(Workloads* workloads) {
  for (const Stage& stage : stages) {
    workloads->push_back({.name = "columns/" + stage.name,
                          .meaning = stage.meaning,
                          .reach = 3,
                          .sizes = {10'000, 100'000, 1'000'000},
                          .at = [=](long size) { return columnCase(stage, stage.document(size)); }});
  }
}

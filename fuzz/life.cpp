// A whole life of a main object. Each line of the input is one call: a letter for the operation, a character for what
// it picks (a column, a flag), and a text. After every call the model must be in order.
#include <kvxbase/kvboptions.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "input.h"
#include "memory_file.h"
#include "models.h"
#include "queries.h"
#include "xmlmap.h"

namespace {

class Life {
 public:
  Life() { kvbSetConfigOption(kv("Bench"), kv("")); }

  void call(Input line) {
    const auto operation = operations.find(static_cast<char>(line.byte()));
    if (operation == operations.end()) return;
    pick_ = line.byte();
    text_ = line.rest();
    (this->*operation->second)();
    checkColumns();
  }

  void end() {
    if (!main_->root()) return;
    queries(*main_, pick_);
    expectSavesTheSame(*main_);
  }

 private:
  static const std::map<char, void (Life::*)()> operations;

  KvbString text() const { return kv(text_); }

  void checkColumns() {
    EXPECT_EQ(main_->getSelectedColumns(), columns_);
    EXPECT_EQ(main_->getSelectedColumn(columns_), nullptr);
    EXPECT_EQ(main_->getSelectedColumn(-1), nullptr);
    for (int i = 0; i < columns_; ++i) EXPECT_EQ(main_->getSelectedColumn(i)->getNode()->getMain(), main_.get());
  }

  // The main object

  void begin() {
    main_ = makeMain(pick_ & 1 ? 0x80000000 : 0);
    node_ = nullptr;
    column_ = nullptr;
    columns_ = 0;
    EXPECT_EQ(str(main_->getCollectionVariableName()), pick_ & 1 ? "KV_BENCH" : "");
  }

  void loadText() {
    filled([&](KvbString* error) { return main_->loadFromXML(text(), error); });
  }

  void loadFile() {
    file_.write(text_);
    filled([&](KvbString* error) { return main_->loadFromFile(kv(file_.path()), error); });
  }

  void import() {
    file_.write(text_);
    const unsigned flags = static_cast<unsigned>(pick_) << 29;
    filled([&](KvbString* error) {
      return main_->createFromXMLMap(kv(file_.path()), kv(table_), kv(groupBy_), flags, error);
    });
    columns_ = main_->getSelectedColumns();
  }

  template <class Fill>
  void filled(Fill fill) {
    XDMElemImpl* before = main_->root();
    KvbString error;
    const bool succeeded = fill(&error);
    if (succeeded) {
      EXPECT_TRUE(error.isNull()) << str(error);
    }
    if (before) {
      EXPECT_EQ(str(error), catalogue(1422));
    }
    if (before) {
      EXPECT_EQ(main_->root(), before);
    }
    node_ = main_->root();
  }

  void setTable() { table_ = text_; }
  void setGroupBy() { groupBy_ = text_; }

  void save() {
    if (main_->root()) {
      EXPECT_EQ(saved(*main_), saved(*main_));
      return;
    }
    KvbString xml, error;
    EXPECT_FALSE(main_->saveToXML(&xml, &error));
    EXPECT_EQ(str(error), catalogue(1423));
    EXPECT_TRUE(xml.isNull());
  }

  void query() { queries(*main_, pick_); }

  // Nodes

  void goToRoot() { go(main_->getRootNode()); }
  void goToChild() {
    if (node_) go(node_->getChild());
  }
  void goToSibling() {
    if (node_) go(node_->getNextSibling());
  }
  void goToParent() {
    if (node_) go(node_->getParent());
  }
  void goToAttribute() {
    if (XDMElement* element = currentElement()) go(element->getNextAttribute(nullptr));
  }

  void go(XDMNode* node) {
    if (!node) return;
    node_ = node;
    EXPECT_EQ(node->getMain(), main_.get());
    EXPECT_GT(node->getXPath().length(), 0);
    EXPECT_TRUE(node->nodeType() == 1 || !node->getChild());
    if (XDMElement* child = node->getChild()) {
      EXPECT_EQ(child->getParent(), node);
    }
  }

  XDMElement* currentElement() { return node_ && node_->nodeType() == 1 ? static_cast<XDMElement*>(node_) : nullptr; }

  void decideRow() {
    XDMElement* element = currentElement();
    if (!element) return;
    const bool decides = pick_ & 1;
    EXPECT_EQ(element->setDecidesRow(decides), decides);
    EXPECT_EQ(element->getDecidesRow(), decides);
    EXPECT_EQ(main_->decidingElement(), decides ? element : nullptr);
  }

  void select() {
    if (!node_) return;
    XDMColumn* column = node_->selectAsColumn(text(), pick_ & 1);
    if (!column) return;
    column_ = column;
    ++columns_;
    EXPECT_EQ(main_->getSelectedColumn(columns_ - 1), column);
    EXPECT_EQ(column->getNode(), node_);
    EXPECT_EQ(column->getIsGroupBy(), pick_ & 1);
    EXPECT_TRUE(text_.empty() || str(column->getName()) == text_);
  }

  // Columns

  void pickColumn() { column_ = main_->getSelectedColumn(pick_ - '0'); }

  void setXPath() {
    if (!column_) return;
    const std::string before = str(column_->getXPath());
    KvbString error;
    const bool accepted = column_->setXPath(text(), &error);
    EXPECT_EQ(error.isNull(), accepted);
    EXPECT_EQ(str(column_->getXPath()), accepted ? text_ : before);
  }

  void addValidValue() {
    if (!column_) return;
    const int before = column_->getValidValues();
    KvbString error;
    EXPECT_TRUE(column_->addValidValue(text(), &error));
    EXPECT_EQ(column_->getValidValues(), before + 1);
    EXPECT_EQ(str(column_->getValidValue(before)), text_);
  }

  void setDefault() {
    if (!column_) return;
    const std::string before = str(column_->getDefault());
    KvbString error;
    const bool accepted = column_->setDefault(text(), &error);
    EXPECT_TRUE(error.isNull());
    EXPECT_TRUE(text_.empty() || str(column_->getDefault()) == (accepted ? text_ : before));
  }

  void setFormats() {
    if (!column_) return;
    column_->setFormat(text());
    column_->setInformat(text());
    EXPECT_EQ(str(column_->getFormat()), text_);
    EXPECT_EQ(str(column_->getInformat()), text_);
  }

  void setTyping() {
    if (!column_) return;
    column_->setType(pick_ % 6);
    column_->setMaximumLength(pick_);
    EXPECT_EQ(column_->getMaximumLength(), pick_ % 6 == 4 ? pick_ : 0);
  }

  void setIsGroupBy() {
    if (!column_) return;
    column_->setIsGroupBy(pick_ & 1);
    EXPECT_EQ(column_->getIsGroupBy(), pick_ & 1);
  }

  void setName() {
    if (!column_) return;
    column_->setName(text());
    EXPECT_EQ(str(column_->getName()), text_);
  }

  MainPtr main_ = makeMain();
  MemoryFile file_;
  XDMNode* node_ = nullptr;
  XDMColumn* column_ = nullptr;
  int columns_ = 0;
  unsigned char pick_ = 0;
  std::string text_;
  std::string table_;
  std::string groupBy_;
};

const std::map<char, void (Life::*)()> Life::operations = {
    {'N', &Life::begin},         {'L', &Life::loadText},      {'F', &Life::loadFile},    {'M', &Life::import},
    {'T', &Life::setTable},      {'G', &Life::setGroupBy},    {'S', &Life::save},        {'Q', &Life::query},
    {'r', &Life::goToRoot},      {'c', &Life::goToChild},     {'s', &Life::goToSibling}, {'p', &Life::goToParent},
    {'a', &Life::goToAttribute}, {'d', &Life::decideRow},     {'+', &Life::select},      {'#', &Life::pickColumn},
    {'x', &Life::setXPath},      {'v', &Life::addValidValue}, {'=', &Life::setDefault},  {'f', &Life::setFormats},
    {'t', &Life::setTyping},     {'g', &Life::setIsGroupBy},  {'n', &Life::setName},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Life life;
  for (Input input(data, size); !input.atEnd();) life.call(Input(input.line()));
  life.end();
  return 0;
}

// Tests the order of the operations in the tables of the interface classes. Hosts are compiled against it: here they
// call by position, through tables declared by hand.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>
#include <kvxlog/kvlogger.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host_model.h"
#include "library_model.h"
#include "process.h"
#include "temporary.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// On this platform an operation is called like a function that takes the object first.
struct MainTable {
  void (*release)(void*);
  bool (*loadFromFile)(void*, const KvbString&, KvbString*);
  bool (*loadFromXML)(void*, const KvbString&, KvbString*);
  bool (*saveToFile)(void*, const KvbString&, KvbString*);
  bool (*saveToXML)(void*, KvbString*, KvbString*);
  bool (*createFromXMLMap)(void*, const KvbString&, const KvbString&, const KvbString&, unsigned, KvbString*);
  KvbString (*getCollectionVariableName)(void*);
  void* (*getRootNode)(void*);
  int (*getSelectedColumns)(void*);
  void* (*getSelectedColumn)(void*, int);
  KvbString (*genXQueryFromColumns)(void*, bool, bool, KvbString*);
  KvbString (*genXQueryToColumns)(void*, bool, bool, bool, bool, KvbString*);
  void (*destroy)(void*);
  void (*destroyAndFree)(void*);
};

struct NodeTable {
  int (*nodeType)(void*);
  void* (*getChild)(void*);
  void* (*getMain)(void*);
  void* (*getNextSibling)(void*);
  void* (*getParent)(void*);
  KvbString (*getDefault)(void*);
  KvbString (*getFormat)(void*);
  KvbString (*getInformat)(void*);
  KvbString (*getLocalName)(void*);
  int (*getMaximumLength)(void*);
  void* (*getNamespace)(void*);
  kvbType (*getType)(void*);
  KvbString (*getValidValue)(void*, int);
  int (*getValidValues)(void*);
  KvbString (*getXPath)(void*);
  void* (*selectAsColumn)(void*, const KvbString&, bool);
};

struct ElementTable {
  NodeTable node;
  bool (*getDecidesRow)(void*);
  int (*getMaxOccurrences)(void*);
  int (*getNamespaces)(void*);
  void* (*getNextAttribute)(void*, void*);
  void* (*getNextNamespace)(void*, void*);
  bool (*setDecidesRow)(void*, bool);
};

struct NamespaceTable {
  void* (*getNextSibling)(void*);
  void* (*getParent)(void*);
  KvbString (*getPrefix)(void*);
  KvbString (*getURI)(void*);
};

struct ColumnTable {
  KvbString (*getDefault)(void*);
  KvbString (*getFormat)(void*);
  KvbString (*getInformat)(void*);
  int (*getIsGroupBy)(void*);
  int (*getMaximumLength)(void*);
  KvbString (*getName)(void*);
  void* (*getNode)(void*);
  kvbType (*getType)(void*);
  KvbString (*getValidValue)(void*, int);
  int (*getValidValues)(void*);
  KvbString (*getXPath)(void*);
  bool (*addValidValue)(void*, const KvbString&, KvbString*);
  bool (*setDefault)(void*, const KvbString&, KvbString*);
  void (*setFormat)(void*, const KvbString&);
  void (*setInformat)(void*, const KvbString&);
  void (*setIsGroupBy)(void*, bool);
  void (*setMaximumLength)(void*, int);
  void (*setName)(void*, const KvbString&);
  void (*setType)(void*, kvbType);
  bool (*setXPath)(void*, const KvbString&, KvbString*);
};

static_assert(sizeof(MainTable) == (12 + 2) * sizeof(void*));
static_assert(sizeof(NodeTable) == 16 * sizeof(void*));
static_assert(sizeof(ElementTable) == 22 * sizeof(void*));
static_assert(sizeof(NamespaceTable) == 4 * sizeof(void*));
static_assert(sizeof(ColumnTable) == 20 * sizeof(void*));

template <class Table>
const Table& tableOf(const void* object) {
  return **static_cast<const Table* const*>(object);
}

class SlotOrder : public ::testing::Test {
 protected:
  XDMMainPtr main = loadModel(libraryModel);
  XDMElement* library = main->getRootNode();
  XDMElement* book = library->getChild();
  KvbString error;
};

TEST(SlotOrderOfMain, BeginsWithRelease) {
  std::vector<std::string> events;
  XDMMain* main = kvxdmCreateMain(0);
  kvlogSetSink([](const KvLogEvent& event,
                  void* texts) { static_cast<std::vector<std::string>*>(texts)->push_back(event.text); },
               &events, 0);
  tableOf<MainTable>(main).release(main);
  main = kvxdmCreateMain(0);
  tableOf<MainTable>(main).destroyAndFree(main);
  kvlogSetSink(nullptr, nullptr, 0);
  const char* end = "XDMMain instance is being destroyed";
  EXPECT_THAT(events, ElementsAre(end, end));
}

TEST(SlotOrderOfMain, HasLoadingAndSavingInSlots2To6) {
  TemporaryFolder folder;
  XDMMainPtr first(kvxdmCreateMain(0)), second(kvxdmCreateMain(0));
  const MainTable& table = tableOf<MainTable>(first.get());
  KvbString xml, error, model = kv(libraryModel), path = kv(folder.file("model.xdm"));
  EXPECT_FALSE(table.createFromXMLMap(first.get(), path, kv(""), kv(""), 0, &error));
  EXPECT_NE(error.length(), 0);
  EXPECT_TRUE(table.loadFromXML(first.get(), model, &error));
  EXPECT_TRUE(table.saveToFile(first.get(), path, &error));
  EXPECT_TRUE(table.loadFromFile(second.get(), path, &error));
  EXPECT_TRUE(table.saveToXML(second.get(), &xml, &error));
  EXPECT_EQ(str(xml), libraryModel);
}

TEST(SlotOrderOfMain, HasTheCollectionVariableInSlot7) {
  XDMMainPtr main(kvxdmCreateMain(0x80000000u));
  EXPECT_EQ(str(tableOf<MainTable>(main.get()).getCollectionVariableName(main.get())).substr(0, 3), "KV_");
}

TEST_F(SlotOrder, OfMainHasRootAndColumnsInSlots8To10) {
  const MainTable& table = tableOf<MainTable>(main.get());
  XDMColumn* column = book->selectAsColumn(kv("b"), false);
  EXPECT_EQ(table.getRootNode(main.get()), library);
  EXPECT_EQ(table.getSelectedColumns(main.get()), 1);
  EXPECT_EQ(table.getSelectedColumn(main.get(), 0), column);
}

TEST_F(SlotOrder, OfMainHasTheGeneratorsInSlots11And12) {
  const MainTable& table = tableOf<MainTable>(main.get());
  book->getChild()->selectAsColumn(kv("t"), false);
  EXPECT_THAT(str(table.genXQueryFromColumns(main.get(), true, false, &error)), HasSubstr("/table/row"));
  EXPECT_THAT(str(table.genXQueryToColumns(main.get(), true, false, true, false, &error)),
              HasSubstr("for $row in /library/book"));
}

TEST_F(SlotOrder, OfAnElementHasTheWalkInSlots1To5) {
  const NodeTable& table = tableOf<NodeTable>(book);
  EXPECT_EQ(table.nodeType(book), 1);
  EXPECT_EQ(str(static_cast<XDMElement*>(table.getChild(book))->getLocalName()), "title");
  EXPECT_EQ(table.getMain(book), main.get());
  EXPECT_EQ(str(static_cast<XDMElement*>(table.getNextSibling(book))->getLocalName()), "address");
  EXPECT_EQ(table.getParent(book), library);
}

TEST_F(SlotOrder, OfAnElementHasThePropertiesInSlots6To16) {
  XDMNode* price = book->getChild()->getNextSibling();
  const NodeTable& table = tableOf<NodeTable>(price);
  for (auto text : {table.getDefault, table.getFormat, table.getInformat}) EXPECT_EQ(text(price).length(), 0);
  EXPECT_EQ(str(table.getLocalName(price)), "price");
  EXPECT_EQ(table.getMaximumLength(price), 0);
  EXPECT_EQ(table.getNamespace(price), library->getNextNamespace(nullptr));
  EXPECT_EQ(table.getType(price), 4);
  EXPECT_EQ(table.getValidValue(price, 0).length(), 0);
  EXPECT_EQ(table.getValidValues(price), 0);
  EXPECT_EQ(str(table.getXPath(price)), "/library/book/m:price");
  auto* column = static_cast<XDMColumn*>(table.selectAsColumn(price, kv("p"), true));
  EXPECT_EQ(column->getIsGroupBy(), 1);
}

TEST_F(SlotOrder, OfAnElementHasItsOwnOperationsInSlots17To22) {
  const ElementTable& table = tableOf<ElementTable>(library);
  EXPECT_FALSE(table.getDecidesRow(library));
  EXPECT_EQ(table.getMaxOccurrences(book), -1);
  EXPECT_EQ(table.getNamespaces(library), 2);
  EXPECT_EQ(str(static_cast<XDMAttribute*>(table.getNextAttribute(library, nullptr))->getLocalName()), "owner");
  EXPECT_EQ(str(static_cast<XDMNamespace*>(table.getNextNamespace(library, nullptr))->getPrefix()), "m");
  EXPECT_TRUE(table.setDecidesRow(library, true));
  EXPECT_TRUE(table.getDecidesRow(library));
  EXPECT_FALSE(table.getDecidesRow(book));
}

TEST_F(SlotOrder, OfAnAttributeIsThatOfANode) {
  XDMAttribute* owner = library->getNextAttribute(nullptr);
  const NodeTable& table = tableOf<NodeTable>(owner);
  EXPECT_EQ(table.nodeType(owner), 0);
  EXPECT_EQ(table.getChild(owner), nullptr);
  EXPECT_EQ(table.getMain(owner), main.get());
  EXPECT_EQ(table.getNextSibling(owner), library->getNextAttribute(owner));
  EXPECT_EQ(table.getParent(owner), library);
  EXPECT_EQ(str(table.getLocalName(owner)), "owner");
  EXPECT_EQ(table.getNamespace(owner), nullptr);
  EXPECT_EQ(table.getType(owner), 0);
  EXPECT_EQ(table.getValidValues(owner), 0);
  EXPECT_EQ(str(table.getXPath(owner)), "/library/@owner");
  void* column = table.selectAsColumn(owner, kv("o"), false);
  EXPECT_EQ(column, main->getSelectedColumn(0));
}

TEST_F(SlotOrder, OfANamespaceHasFourOperations) {
  XDMNamespace* meta = library->getNextNamespace(nullptr);
  const NamespaceTable& table = tableOf<NamespaceTable>(meta);
  EXPECT_EQ(table.getNextSibling(meta), library->getNextNamespace(meta));
  EXPECT_EQ(table.getParent(meta), library);
  EXPECT_EQ(str(table.getPrefix(meta)), "m");
  EXPECT_EQ(str(table.getURI(meta)), "urn:meta");
}

TEST_F(SlotOrder, OfAColumnHasTheSettersInSlots12To20) {
  XDMColumn* column = book->selectAsColumn(kv("b"), true);
  const ColumnTable& table = tableOf<ColumnTable>(column);
  EXPECT_TRUE(table.addValidValue(column, kv("v"), &error));
  EXPECT_TRUE(table.setDefault(column, kv("v"), &error));
  table.setFormat(column, kv("F"));
  table.setInformat(column, kv("I"));
  table.setIsGroupBy(column, false);
  table.setMaximumLength(column, 7);
  table.setName(column, kv("N"));
  table.setType(column, 4);
  EXPECT_TRUE(table.setXPath(column, kv("/library/book[1]"), &error));

  std::vector<std::string> texts;
  for (auto get : {table.getDefault, table.getFormat, table.getInformat, table.getName, table.getXPath}) {
    texts.push_back(str(get(column)));
  }
  EXPECT_THAT(texts, ElementsAre("v", "F", "I", "N", "/library/book[1]"));
  EXPECT_EQ(column->getIsGroupBy(), 0);
  EXPECT_EQ(column->getMaximumLength(), 7);
}

TEST_F(SlotOrder, OfAColumnHasTheGettersInSlots1To11) {
  XDMColumn* column = book->selectAsColumn(kv("b"), true);
  const ColumnTable& table = tableOf<ColumnTable>(column);
  column->setMaximumLength(7);
  column->addValidValue(kv("v"), &error);
  EXPECT_EQ(table.getIsGroupBy(column), 1);
  EXPECT_EQ(table.getMaximumLength(column), 7);
  EXPECT_EQ(table.getNode(column), book);
  EXPECT_EQ(table.getType(column), 4);
  EXPECT_EQ(str(table.getValidValue(column, 0)), "v");
  EXPECT_EQ(table.getValidValues(column), 1);
  EXPECT_EQ(str(table.getXPath(column)), "/library/book");
}

// The tables as a whole, by the symbols of the library: operations in order, then the two entries of the destructor,
// and nothing behind.

/** The functions of the library by address, without the names of their classes; several may share one. */
std::multimap<std::uintptr_t, std::string> functionsByAddress() {
  std::istringstream lines(runProcess({"nm", "-C", "--defined-only", KVXDM_LIBRARY}).output);
  std::multimap<std::uintptr_t, std::string> functions;
  for (std::string line; std::getline(lines, line);) {
    std::istringstream fields(line);
    std::uintptr_t address = 0;
    std::string kind, name;
    fields >> std::hex >> address >> kind;
    std::getline(fields >> std::ws, name);
    name.resize(std::min(name.size(), name.find('(')));
    functions.emplace(address, name.substr(name.rfind(':') + 1));
  }
  return functions;
}

/** The number of functions in the table of `type`, which two other entries precede. */
std::size_t tableSize(const std::string& type) {
  std::istringstream lines(runProcess({"nm", "-C", "-S", "--defined-only", KVXDM_LIBRARY}).output);
  for (std::string line; std::getline(lines, line);) {
    if (line.ends_with(" vtable for " + type)) return std::stoul(line.substr(17, 16), nullptr, 16) / sizeof(void*) - 2;
  }
  return 0;
}

class WholeTable : public SlotOrder {
 protected:
  void expectTable(const void* object, const std::string& type, std::vector<std::string> operations) {
    operations.insert(operations.end(), 2, "~" + type);
    EXPECT_EQ(tableSize(type), operations.size());
    const void* const* entries = *static_cast<const void* const* const*>(object);
    for (std::size_t slot = 0; slot < operations.size(); ++slot) {
      EXPECT_THAT(namesOf(entries[slot]), Contains(operations[slot])) << "slot " << slot + 1;
    }
  }

  std::vector<std::string> namesOf(const void* function) const {
    Dl_info info{};
    dladdr(function, &info);
    auto address = reinterpret_cast<std::uintptr_t>(function) - reinterpret_cast<std::uintptr_t>(info.dli_fbase);
    std::vector<std::string> names;
    auto [first, last] = functions.equal_range(address);
    for (auto entry = first; entry != last; ++entry) names.push_back(entry->second);
    return names;
  }

  const std::multimap<std::uintptr_t, std::string> functions = functionsByAddress();
  const std::vector<std::string> nodeOperations = {
      "nodeType",      "getChild",       "getMain",      "getNextSibling",   "getParent",    "getDefault",
      "getFormat",     "getInformat",    "getLocalName", "getMaximumLength", "getNamespace", "getType",
      "getValidValue", "getValidValues", "getXPath",     "selectAsColumn"};
};

TEST_F(WholeTable, OfMain) {
  expectTable(main.get(), "XDMMainImpl",
              {"release", "loadFromFile", "loadFromXML", "saveToFile", "saveToXML", "createFromXMLMap",
               "getCollectionVariableName", "getRootNode", "getSelectedColumns", "getSelectedColumn",
               "genXQueryFromColumns", "genXQueryToColumns"});
}

TEST_F(WholeTable, OfAnElement) {
  std::vector<std::string> operations = nodeOperations;
  for (const char* own : {"getDecidesRow", "getMaxOccurrences", "getNamespaces", "getNextAttribute", "getNextNamespace",
                          "setDecidesRow"}) {
    operations.push_back(own);
  }
  expectTable(library, "XDMElemImpl", operations);
}

TEST_F(WholeTable, OfAnAttribute) { expectTable(library->getNextAttribute(nullptr), "XDMAttrImpl", nodeOperations); }

TEST_F(WholeTable, OfANamespace) {
  expectTable(library->getNextNamespace(nullptr), "XDMNSImpl", {"getNextSibling", "getParent", "getPrefix", "getURI"});
}

TEST_F(WholeTable, OfAColumn) {
  expectTable(book->selectAsColumn(kv("b"), false), "XDMColumnImpl",
              {"getDefault",   "getFormat",        "getInformat", "getIsGroupBy",  "getMaximumLength",
               "getName",      "getNode",          "getType",     "getValidValue", "getValidValues",
               "getXPath",     "addValidValue",    "setDefault",  "setFormat",     "setInformat",
               "setIsGroupBy", "setMaximumLength", "setName",     "setType",       "setXPath"});
}

}  // namespace

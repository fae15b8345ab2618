// Tests what happens when memory is exhausted: every operation on model, columns and document is run with each of its
// allocations failing in turn, alone and together with all later ones. It either does all of its work or fails with one
// of its texts, and what was in the model before is still there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "allocation_faults.h"
#include "model.h"
#include "temporary.h"

namespace {

using ::testing::Contains;
using ::testing::IsSupersetOf;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

using Extent = AllocationFaults::Extent;

/** Runs `operation` with allocation `nth` failing; whether it met the failure. */
template <class Operation>
bool withFaults(long nth, Extent extent, Operation operation) {
  AllocationFaults faults(nth, extent);
  operation();
  return faults.met();
}

/** The texts of an operation's failures. When all memory is gone, there may be none for the text. */
class Reports {
 public:
  void add(Extent extent, const KvbString& text) {
    if (extent == Extent::once) {
      EXPECT_NE(text.length(), 0);
    }
    if (text.length() != 0) texts.insert(str(text));
  }

  std::set<std::string> texts;
};

const KvbString none = kv("");
const KvbString name = kv("a name that is too long to be held in place");
const KvbString prefix = kv("p");
const KvbString step = kv("a step that is too long to be held in place");
const std::string noXPath = catalogue(29, "(XPath)");

// The tree

TEST(ExhaustedRoot, IsMadeOrReported) {
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    XDMMainImpl main(0);
    XDMElemImpl* root = nullptr;
    bool met = withFaults(nth, extent, [&] { root = main.createRoot(prefix, name); });
    EXPECT_EQ(root, main.root());
    if (!root || root->getXPath().isNull()) reports.add(extent, main.errorMessage());
    EXPECT_EQ(root ? str(root->getLocalName()) : str(name), str(name));
    delete root;
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre(catalogue(29, "(XDM Root)"), noXPath));
}

/** Makes a child of a root with `count` children, `visited` or not, and gives the texts of the failures. */
std::set<std::string> createChildReports(int count, bool visited) {
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    for (int i = 0; i < count; ++i) {
      XDMElemImpl* child = addUnvisitedChild(model.root, std::to_string(i).c_str());
      if (visited) child->setBeenHere();
    }
    std::vector<std::string> names = childNames(model.root);
    XDMElemImpl* child = nullptr;
    bool created = false;
    bool met = withFaults(nth, extent, [&] { child = model.root->createChild(prefix, name, &created); });
    EXPECT_EQ(created, child != nullptr);
    if (!child || child->getXPath().isNull()) reports.add(extent, model.main.errorMessage());
    if (child) names.insert(visited ? names.end() : names.begin(), str(name));
    EXPECT_EQ(childNames(model.root), names);
    return met;
  });
  return reports.texts;
}

TEST(ExhaustedChild, AtTheEndIsMadeOrReported) {
  // An element whose XPath could not be made is kept; its text tells.
  EXPECT_THAT(createChildReports(10, true),
              UnorderedElementsAre("createChild() failed to instantiate a new child",
                                   "createChild() failed to append the new child", noXPath));
}

TEST(ExhaustedChild, AmongOthersIsMadeOrReported) {
  EXPECT_THAT(createChildReports(10, false),
              UnorderedElementsAre("createChild() failed to instantiate a new child",
                                   "createChild() failed to insert the new child", noXPath));
}

TEST(ExhaustedChild, OfManyIsMadeOrReportedWithoutAnIndexToo) {
  EXPECT_THAT(createChildReports(40, true),
              UnorderedElementsAre("createChild() failed to instantiate a new child",
                                   "createChild() failed to append the new child", noXPath));
}

TEST(ExhaustedChild, IsFoundAmongManyWithoutMemoryForAnIndex) {
  sweepAllocationFaults([](long nth, Extent extent) {
    Model model;
    for (int i = 0; i < 40; ++i) addChild(model.root, std::to_string(i).c_str());
    const KvbString last = kv("39");
    XDMElemImpl* found = nullptr;
    bool created = true;
    bool met = withFaults(nth, extent, [&] { found = model.root->createChild(none, last, &created); });
    EXPECT_FALSE(created);
    EXPECT_EQ(str(found->getLocalName()), "39");
    return met;
  });
}

TEST(ExhaustedAttribute, IsMadeOrReported) {
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    XDMNSImpl* ns = model.root->createNamespace(prefix, name);
    for (int i = 0; i < 20; ++i) addAttribute(model.root, std::to_string(i).c_str());
    XDMAttrImpl* attribute = nullptr;
    bool created = false;
    bool met = withFaults(nth, extent, [&] { attribute = model.root->createAttribute(ns, name, &created); });
    EXPECT_EQ(created, attribute != nullptr);
    if (!attribute) reports.add(extent, model.main.errorMessage());
    EXPECT_TRUE(!attribute || str(attribute->getXPath()) == "/a/@p:" + str(name));
    XDMAttribute* last = model.root->firstAttribute();
    while (XDMAttribute* next = model.root->getNextAttribute(last)) last = next;
    EXPECT_EQ(str(last->getLocalName()), attribute ? str(name) : "19");
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre("createAttribute() failed to instantiate a new attribute",
                                                  "createAttribute() failed to append  the new attribute", noXPath));
}

TEST(ExhaustedAttribute, IsFoundAmongManyWithoutMemoryForAnIndex) {
  sweepAllocationFaults([](long nth, Extent extent) {
    Model model;
    for (int i = 0; i < 40; ++i) addAttribute(model.root, std::to_string(i).c_str());
    const KvbString last = kv("39");
    XDMAttrImpl* found = nullptr;
    bool created = true;
    bool met = withFaults(nth, extent, [&] { found = model.root->createAttribute(nullptr, last, &created); });
    EXPECT_FALSE(created);
    EXPECT_EQ(str(found->getLocalName()), "39");
    return met;
  });
}

TEST(ExhaustedNamespace, IsMadeOrReported) {
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    XDMNSImpl* declaration = nullptr;
    bool met = withFaults(nth, extent, [&] { declaration = model.root->createNamespace(prefix, name); });
    EXPECT_EQ(model.root->getNamespaces(), declaration ? 1 : 0);
    EXPECT_EQ(model.root->lookupNamespace(prefix), declaration);
    if (!declaration) reports.add(extent, model.main.errorMessage());
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre("createNamespace() failed to instantiate a new namespace",
                                                  "createNamespace() failed to append  the new namespace"));
}

TEST(ExhaustedNamespace, IsFoundAmongManyWithoutMemoryForAnIndex) {
  sweepAllocationFaults([](long nth, Extent extent) {
    Model model;
    for (int i = 0; i < 40; ++i) model.root->createNamespace(kv(std::to_string(i)), name);
    const KvbString last = kv("39");
    XDMNSImpl* found = nullptr;
    bool met = withFaults(nth, extent, [&] { found = model.root->lookupNamespace(last); });
    EXPECT_EQ(str(found->getPrefix()), "39");
    return met;
  });
}

// Columns

/** Selects the root under `columnName` behind `others` columns of the node's own name, and gives the texts. */
std::set<std::string> selectReports(const KvbString& columnName, int others) {
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    for (int i = 0; i < others; ++i) model.root->selectAsColumn(none, false);
    XDMColumn* column = nullptr;
    bool met = withFaults(nth, extent, [&] { column = model.root->selectAsColumn(columnName, true); });
    EXPECT_EQ(model.main.getSelectedColumns(), others + (column ? 1 : 0));
    EXPECT_EQ(model.main.getSelectedColumn(others), column);
    if (column) return met;
    reports.add(extent, model.main.errorMessage());
    // The name is free again.
    EXPECT_NE(model.root->selectAsColumn(columnName, true), nullptr);
    return met;
  });
  return reports.texts;
}

TEST(ExhaustedSelection, OfANamedColumnIsReported) {
  EXPECT_THAT(selectReports(name, 0),
              UnorderedElementsAre(catalogue(29, "(Selected Column)"), catalogue(1433, name.asCstr())));
}

TEST(ExhaustedSelection, OfAColumnNamedAfterItsNodeIsReported) {
  EXPECT_THAT(selectReports(none, 0), UnorderedElementsAre(catalogue(29, "(Selected Column)"), catalogue(1433, "a")));
}

TEST(ExhaustedSelection, OfAColumnWithANumberIsReported) {
  EXPECT_THAT(selectReports(none, 10),
              UnorderedElementsAre(catalogue(29, "(Selected Column)"), catalogue(1433, "a10")));
}

TEST(ExhaustedColumn, KeepsItsValidValuesWhenAnotherCannotBeAdded) {
  Reports reports;
  const KvbString value = kv("v");
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    KvbString error;
    XDMColumn* column = model.root->selectAsColumn(none, false);
    column->addValidValue(kv("first"), &error);
    bool added = false;
    bool met = withFaults(nth, extent, [&] {
      for (int i = 0; i < 10 && (i == 0 || added); ++i) added = column->addValidValue(value, &error);
    });
    EXPECT_EQ(str(column->getValidValue(0)), "first");
    EXPECT_EQ(str(column->getValidValue(column->getValidValues() - 1)), column->getValidValues() > 1 ? "v" : "first");
    if (!added) reports.add(extent, error);
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre(catalogue(29, "(Valid Value)"), catalogue(1434, "Value", "v")));
}

TEST(ExhaustedColumn, MayCopySomeOfItsNodesValidValues) {
  std::set<std::string> outcomes;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    KvbString error;
    const KvbString value = kv("C");
    for (const char* text : {"A", "B"}) model.root->columnInfo().addValidValue(kv(text), &error);
    XDMColumn* column = model.root->selectAsColumn(none, false);
    bool added = false;
    bool met = withFaults(nth, extent, [&] { added = column->addValidValue(value, &error); });
    std::string values = added ? "added: " : "";
    for (int i = 0; i < column->getValidValues(); ++i) values += str(column->getValidValue(i));
    outcomes.insert(values);
    return met;
  });
  EXPECT_THAT(outcomes, UnorderedElementsAre("A", "AB", "added: ABC"));
}

TEST(ExhaustedColumn, KeepsItsXPathWhenAnotherCannotBeChecked) {
  Reports reports;
  const KvbString xpath = kv("/a/p:b[a predicate that is long]/p:c");
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    XDMNSImpl* ns = model.root->createNamespace(prefix, name);
    XDMElemImpl* child = addChild(model.root, "b", "p");
    child->setNamespace(ns);
    addChild(child, "c", "p")->setNamespace(ns);
    XDMColumn* column = child->selectAsColumn(none, false);
    KvbString error;
    bool set = false;
    bool met = withFaults(nth, extent, [&] { set = column->setXPath(xpath, &error); });
    EXPECT_EQ(str(column->getXPath()), set ? str(xpath) : "/a/p:b");
    if (!set) reports.add(extent, error);
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre(catalogue(29, "(XPath step array)"), catalogue(29, "(XPath step)")));
}

TEST(ExhaustedXPath, IsNotCutIntoSteps) {
  Reports reports;
  const KvbString xpath = kv("/a/b");
  sweepAllocationFaults([&](long nth, Extent extent) {
    XDMMainImpl main(0);
    int count = -1;
    std::unique_ptr<KvbString[]> steps;
    bool met = withFaults(nth, extent, [&] { steps.reset(main.parseXPath(xpath, &count)); });
    EXPECT_EQ(count, steps ? 2 : 0);
    if (!steps) reports.add(extent, main.errorMessage());
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre(catalogue(29, "(XPath step array)")));
}

/** Adds a second step to the node that `nodeOf` takes from a model, and gives the texts of the failures. */
template <class NodeOf>
std::set<std::string> addStepReports(NodeOf nodeOf) {
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    auto* node = nodeOf(model);
    node->addSelectedXPath(kv("first"));
    bool added = false;
    bool met = withFaults(nth, extent, [&] { added = node->addSelectedXPath(step); });
    EXPECT_EQ(node->getSelectedXPaths(), added ? 2 : 1);
    if (!added) reports.add(extent, model.main.errorMessage());
    return met;
  });
  return reports.texts;
}

TEST(ExhaustedStep, OfAnElementIsReportedInWords) {
  EXPECT_THAT(addStepReports([](Model& model) { return model.root; }),
              UnorderedElementsAre("Failed to allocate memory to hold XPath step '" + str(step) + "'.",
                                   "Failed to capture XPath step '" + str(step) + "'."));
}

TEST(ExhaustedStep, OfAnAttributeIsReportedByNumber) {
  EXPECT_THAT(addStepReports([](Model& model) { return addAttribute(model.root, "id"); }),
              UnorderedElementsAre(catalogue(29, "(XPath Step)"), catalogue(1434, "(XPath Step)", step.asCstr())));
}

// An ancestor's step is missed only by the query that goes by these steps, after all columns are marked.
TEST(ExhaustedStep, OfAnAncestorIsReportedByTheQueryFromRows) {
  std::set<std::pair<std::string, std::string>> texts;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model(name.asCstr());
    addChild(model.root, "b")->selectAsColumn(none, false);
    KvbString error;
    bool met = withFaults(nth, extent, [&] { model.main.genXQueryFromColumns(false, false, &error); });
    texts.emplace(model.error(), str(error));
    return met;
  });
  EXPECT_THAT(texts, Contains(Pair("Failed to allocate memory to hold XPath step '" + str(name) + "'.",
                                   catalogue(29, "(XQuery)"))));
}

// What is allocated last is the query as a whole.
TEST(ExhaustedQuery, FromRowsThatCannotBePutTogetherIsReported) {
  std::string last;
  sweepAllocationFaults([&](long nth, Extent extent) {
    Model model;
    addChild(model.root, "b")->selectAsColumn(none, false);
    KvbString query, error;
    bool met = withFaults(nth, extent, [&] { query = model.main.genXQueryFromColumns(true, false, &error); });
    if (extent == Extent::once && query.length() == 0) last = str(error);
    return met;
  });
  EXPECT_EQ(last, catalogue(29, "(XQuery)"));
}

// The document

const char* const document = R"(<?xml version="1.0" encoding="UTF-8"?>
<xdm version="1.0">
  <element name="a" prefix="p" uri="urn:p" occurs="1" decides="true">
    <namespace prefix="p" uri="urn:p"/>
    <attribute name="id" prefix="p" uri="urn:p"/>
    <element name="b" occurs="2"/>
  </element>
</xdm>
)";

/** A main object that takes its tree with it. */
class LoadedModel {
 public:
  LoadedModel() = default;
  explicit LoadedModel(const std::string& xml) {
    KvbString error;
    EXPECT_TRUE(main.loadFromXML(kv(xml), &error)) << str(error);
  }
  ~LoadedModel() { delete main.root(); }

  std::string saved() {
    KvbString xml, error;
    EXPECT_TRUE(main.saveToXML(&xml, &error)) << str(error);
    return str(xml);
  }

  XDMMainImpl main{0};
};

// Some texts are made before the document is: their failure is that of the whole operation.
const std::string noRoom = catalogue(29, "(XDM Root)");

/** Saves `model` as text and adds the texts of the failures. */
void sweepSaving(LoadedModel* model, Reports* reports) {
  const std::string expected = model->saved();
  sweepAllocationFaults([&](long nth, Extent extent) {
    KvbString xml, error;
    bool done = false;
    bool met = withFaults(nth, extent, [&] { done = model->main.saveToXML(&xml, &error); });
    EXPECT_EQ(str(xml), done ? expected : "");
    if (!done) reports->add(extent, error);
    return met;
  });
  EXPECT_EQ(model->saved(), expected);
}

/**
 * Saves `element` behind 0, 1, 2, ... other nodes, and gives the texts of the failures. The DOM service asks for memory
 * only now and then, so the nodes before decide which part of the element is the one that gets none.
 */
std::set<std::string> saveReports(const std::string& element) {
  Reports reports;
  std::string others;
  for (int i = 0; i < 8 * 21; ++i) {
    LoadedModel model("<xdm version='1.0'><element name='root'>" + others + element + "</element></xdm>");
    sweepSaving(&model, &reports);
    others += "<attribute name='other" + std::to_string(i) + "'/>";
  }
  return reports.texts;
}

TEST(ExhaustedSave, OfASmallModelIsReportedAsAWhole) {
  LoadedModel model(document);
  Reports reports;
  sweepSaving(&model, &reports);
  EXPECT_THAT(reports.texts, UnorderedElementsAre(noRoom, catalogue(1430), catalogue(1431, "xdm")));
}

TEST(ExhaustedSave, ReportsThePartOfAnElementThatCouldNotBeWritten) {
  EXPECT_THAT(
      saveReports(R"(<element name="a" prefix="p" decides="true"><namespace prefix="p" uri="u"/></element>)"),
      IsSupersetOf({catalogue(1435, "element", "a"), catalogue(1438, "element", "a"), catalogue(1437, "element", "a"),
                    std::string("Unable to include 'occurs' attribute value for element 'a'."),
                    std::string("Unable to include 'decides' attribute value for element 'a'."),
                    catalogue(1438, "namespace", "p"), catalogue(1438, "namespace", "u")}));
}

TEST(ExhaustedSave, ReportsThePartOfAnAttributeThatCouldNotBeWritten) {
  EXPECT_THAT(saveReports(R"(<element name="a"><namespace prefix="p" uri="u"/><attribute name="id" prefix="p"/>
                             </element>)"),
              IsSupersetOf({catalogue(1435, "attribute", "id"), catalogue(1438, "attribute", "id"),
                            catalogue(1437, "attribute", "id")}));
}

TEST(ExhaustedSave, ReportsADefaultDeclarationByANumberOfItsOwn) {
  EXPECT_THAT(saveReports(R"(<element name="a"><namespace uri="u"/></element>)"),
              IsSupersetOf({catalogue(1438, "namespace", "default namespace"), catalogue(1432, "default namespace"),
                            catalogue(1438, "namespace", "u")}));
}

TEST(ExhaustedSave, LeavesAnOldFileAlone) {
  TemporaryFolder folder;
  const KvbString path = kv(folder.file("model.xdm"));
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    LoadedModel loaded(document);
    folder.write("model.xdm", "old");
    KvbString error;
    bool done = false;
    bool met = withFaults(nth, extent, [&] { done = loaded.main.saveToFile(path, &error); });
    EXPECT_EQ(readFile(path.asCstr()), done ? document : "old");
    if (!done) reports.add(extent, error);
    return met;
  });
  EXPECT_THAT(reports.texts, Contains(catalogue(463, path.asCstr())));
}

// The XML parser leaves memory behind when it has none, so its own allocations are not swept here; and what is made
// once in a process is made by a first load.
TEST(ExhaustedLoad, ReportsTheNodeThatCouldNotBeMade) {
  LoadedModel first(document);
  KvDom dom;
  ASSERT_TRUE(dom.loadXML(kv(document)));
  Reports reports;
  sweepAllocationFaults([&](long nth, Extent extent) {
    LoadedModel loaded;
    bool done = false;
    bool met = withFaults(nth, extent, [&] { done = loaded.main.fromDOM(dom); });
    if (!done) reports.add(extent, loaded.main.errorMessage());
    EXPECT_TRUE(!done || loaded.saved() == document);
    XDMElemImpl* root = loaded.main.root();
    EXPECT_EQ(root ? str(root->getLocalName()) : "a", "a");
    return met;
  });
  EXPECT_THAT(reports.texts, UnorderedElementsAre(noRoom, noXPath, "createChild() failed to instantiate a new child",
                                                  "createChild() failed to append the new child",
                                                  "createAttribute() failed to instantiate a new attribute",
                                                  "createAttribute() failed to append  the new attribute",
                                                  "createNamespace() failed to instantiate a new namespace",
                                                  "createNamespace() failed to append  the new namespace"));
}

TEST(ExhaustedLoad, OfATextThatCannotBeParsedIsReported) {
  const KvbString xml = kv(document);
  LoadedModel first(document), second;
  KvbString error;
  withFaults(1, Extent::once, [&] { second.main.loadFromXML(xml, &error); });
  EXPECT_EQ(str(error), catalogue(1429));
  EXPECT_TRUE(second.main.loadFromXML(xml, &error));
}

TEST(ExhaustedLoad, OfAFileThatCannotBeParsedNamesThePath) {
  TemporaryFolder folder;
  const KvbString path = kv(folder.write("model.xdm", document));
  LoadedModel first(document), second;
  KvbString error;
  withFaults(1, Extent::once, [&] { second.main.loadFromFile(path, &error); });
  EXPECT_EQ(str(error), catalogue(1428, path.asCstr()));
  EXPECT_TRUE(second.main.loadFromFile(path, &error));
}

// The main object

TEST(ExhaustedConstruction, ThrowsOrNamesTheWholeCollectionVariable) {
  sweepAllocationFaults([](long nth, Extent extent) {
    std::string name;
    KvbString variable;
    bool met = withFaults(nth, extent, [&] {
      try {
        variable = XDMMainImpl(0x80000000u).getCollectionVariableName();
      } catch (const std::bad_alloc&) {
        variable.setNull();
      }
    });
    EXPECT_EQ(variable.length(), variable.isNull() ? 0 : 3 + 36);
    return met;
  });
}

TEST(ExhaustedMemory, LeavesTheGettersAnswering) {
  LoadedModel loaded(document);
  std::vector<KvbString> texts(3);
  withFaults(1, Extent::fromThenOn, [&] {
    XDMElement* root = loaded.main.getRootNode();
    texts[0] = root->getXPath();
    texts[1] = root->getNamespace()->getURI();
    texts[2] = root->getNextAttribute(nullptr)->getLocalName();
  });
  EXPECT_EQ(str(texts[0]), "/p:a");
  EXPECT_EQ(str(texts[1]), "urn:p");
  EXPECT_EQ(str(texts[2]), "id");
}

}  // namespace

// Tests kvxdmelem.cpp: elements, the construction of the tree and the XPaths of nodes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "model.h"

namespace {

using ::testing::ElementsAre;

class Element : public ::testing::Test {
 protected:
  Model model;
  XDMElemImpl* root = model.root;
  bool created = false;
};

using Root = Element;
using CreateChild = Element;
using CreateAttribute = Element;
using CreateNamespace = Element;
using NodeXPath = Element;

TEST_F(Element, StartsWithTheValuesOfAnElement) {
  EXPECT_EQ(root->nodeType(), 1);
  EXPECT_EQ(root->getType(), 4);
  EXPECT_EQ(root->getMaxOccurrences(), 1);
  EXPECT_EQ(root->getNamespace(), nullptr);
  EXPECT_EQ(root->getNamespaces(), 0);
  EXPECT_EQ(root->getValidValues(), 0);
  EXPECT_EQ(root->getMaximumLength(), 0);
  EXPECT_FALSE(root->getDecidesRow());
  EXPECT_FALSE(root->hasSelectedChild());
  EXPECT_EQ(root->getSelectedXPaths(), 0);
  EXPECT_EQ(root->parentOfDecidingRow(), 0);
}

TEST_F(Element, KnowsItsPlaceInTheTree) {
  XDMElemImpl* first = addChild(root, "b");
  XDMElemImpl* second = addChild(root, "c");
  EXPECT_EQ(root->getChild(), first);
  EXPECT_EQ(first->getNextSibling(), second);
  EXPECT_EQ(second->getParent(), root);
  EXPECT_EQ(second->getMain(), &model.main);
}

TEST_F(Element, TheLastChildAndTheRootHaveNoNextSibling) {
  XDMElemImpl* last = addChild(root, "b");
  EXPECT_EQ(last->getNextSibling(), nullptr);
  EXPECT_EQ(root->getNextSibling(), nullptr);
}

TEST_F(Element, WithoutChildrenHasNoFirstChild) { EXPECT_EQ(root->getChild(), nullptr); }

TEST_F(Element, ReadsItsColumnProperties) {
  KvbString error;
  XDMColumnInfo& info = root->columnInfo();
  info.setFormat(kv("F"));
  info.setInformat(kv("I"));
  info.setMaximumLength(7);
  info.addValidValue(kv("v"), &error);
  info.setDefault(kv("v"), &error);
  EXPECT_EQ(str(root->getFormat()), "F");
  EXPECT_EQ(str(root->getInformat()), "I");
  EXPECT_EQ(root->getMaximumLength(), 7);
  EXPECT_EQ(str(root->getValidValue(0)), "v");
  EXPECT_EQ(str(root->getDefault()), "v");
}

TEST_F(Element, SelectsItselfAsAColumn) {
  XDMColumn* column = root->selectAsColumn(kv("whole"), true);
  EXPECT_EQ(column->getNode(), root);
  EXPECT_EQ(str(column->getName()), "whole");
  EXPECT_EQ(column->getIsGroupBy(), 1);
}

TEST_F(Root, IsMadeOnlyOnce) {
  EXPECT_EQ(model.main.createRoot(kv(""), kv("b")), nullptr);
  EXPECT_EQ(model.error(), catalogue(1422));
  EXPECT_EQ(model.main.getRootNode(), root);
}

TEST_F(CreateChild, FindsTheChildThatItMade) {
  XDMElemImpl* first = root->createChild(kv(""), kv("a"), &created);
  EXPECT_TRUE(created);
  EXPECT_EQ(root->createChild(kv(""), kv("a"), &created), first);
  EXPECT_FALSE(created);
}

TEST_F(CreateChild, PutsANewChildRightAfterTheVisitedOnes) {
  addChild(root, "a");
  addChild(root, "b");
  XDMElemImpl* unvisited = addUnvisitedChild(root, "z");
  root->createChild(kv(""), kv("c"), &created);
  EXPECT_TRUE(created);
  EXPECT_THAT(childNames(root), ElementsAre("a", "b", "c", "z"));
  EXPECT_EQ(unvisited->getNextSibling(), nullptr);
}

TEST_F(CreateChild, FindsTheFirstUnvisitedChild) {
  addChild(root, "a");
  XDMElemImpl* unvisited = addUnvisitedChild(root, "b");
  EXPECT_EQ(root->createChild(kv(""), kv("b"), &created), unvisited);
  EXPECT_FALSE(created);
}

TEST_F(CreateChild, DoesNotLookBeyondAnUnvisitedChild) {
  addChild(root, "a");
  XDMElemImpl* hidden = addUnvisitedChild(root, "b");
  addUnvisitedChild(root, "c");
  XDMElemImpl* second = root->createChild(kv(""), kv("b"), &created);
  EXPECT_TRUE(created);
  EXPECT_NE(second, hidden);
  EXPECT_THAT(childNames(root), ElementsAre("a", "b", "c", "b"));
}

TEST_F(CreateChild, PassesOverVisitedChildrenOnlyUpToAnUnvisitedOne) {
  XDMElemImpl* last = addUnvisitedChild(root, "c");
  XDMElemImpl* first = addUnvisitedChild(root, "a");
  last->setBeenHere();
  XDMElemImpl* made = root->createChild(kv(""), kv("c"), &created);
  EXPECT_NE(made, last);
  made->setBeenHere();
  first->setBeenHere();
  root->createChild(kv(""), kv("d"), &created);
  EXPECT_THAT(childNames(root), ElementsAre("c", "a", "c", "d"));
  EXPECT_EQ(root->createChild(kv(""), kv("c"), &created), made);
}

TEST_F(CreateChild, TellsChildrenApartByThePrefixOfTheirNamespace) {
  XDMElemImpl* plain = addChild(root, "b");
  EXPECT_NE(root->createChild(kv("p"), kv("b"), &created), plain);
  EXPECT_TRUE(created);
}

TEST_F(CreateChild, FindsAPrefixedChildOnceItHasItsNamespace) {
  XDMElemImpl* child = addChild(root, "b", "p");
  EXPECT_NE(addChild(root, "b", "p"), child);
  child->setNamespace(root->createNamespace(kv("p"), kv("urn:p")));
  EXPECT_EQ(root->createChild(kv("p"), kv("b"), &created), child);
}

TEST_F(CreateChild, TakesADefaultNamespaceForNoPrefix) {
  XDMElemImpl* child = addChild(root, "b");
  child->setNamespace(root->createNamespace(kv(""), kv("urn:default")));
  EXPECT_EQ(root->createChild(kv(""), kv("b"), &created), child);
  EXPECT_EQ(root->createChild(KvbString(), kv("b"), &created), child);
}

TEST_F(CreateChild, TakesANullPrefixOfANamespaceForNoPrefix) {
  XDMElemImpl* child = addChild(root, "b");
  child->setNamespace(root->createNamespace(KvbString(), kv("urn:default")));
  EXPECT_EQ(root->createChild(kv(""), kv("b"), &created), child);
}

TEST_F(CreateChild, IsCaseSensitive) {
  XDMElemImpl* child = addChild(root, "b");
  EXPECT_NE(addChild(root, "B"), child);
}

TEST_F(CreateAttribute, FindsTheAttributeThatItMade) {
  XDMAttrImpl* first = root->createAttribute(nullptr, kv("id"), &created);
  EXPECT_TRUE(created);
  EXPECT_EQ(root->createAttribute(nullptr, kv("id"), &created), first);
  EXPECT_FALSE(created);
}

TEST_F(CreateAttribute, TellsAttributesApartByTheUriWhateverThePrefix) {
  XDMNSImpl* p = root->createNamespace(kv("p"), kv("u"));
  XDMNSImpl* q = root->createNamespace(kv("q"), kv("u"));
  XDMAttrImpl* plain = addAttribute(root, "id");
  XDMAttrImpl* qualified = addAttribute(root, "id", p);
  EXPECT_NE(qualified, plain);
  EXPECT_EQ(root->createAttribute(q, kv("id"), &created), qualified);
  EXPECT_FALSE(created);
}

TEST_F(CreateAttribute, DoesNotTakeAnEmptyUriForNoNamespace) {
  XDMAttrImpl* plain = addAttribute(root, "id");
  XDMAttrImpl* empty = addAttribute(root, "id", root->createNamespace(kv("p"), kv("")));
  EXPECT_NE(empty, plain);
  EXPECT_EQ(addAttribute(root, "id", root->createNamespace(kv("q"), KvbString())), empty);
}

TEST_F(CreateAttribute, SearchesTheWholeList) {
  XDMAttrImpl* first = addAttribute(root, "a");
  XDMAttrImpl* second = addAttribute(root, "b");
  XDMAttrImpl* third = addAttribute(root, "c");
  EXPECT_EQ(addAttribute(root, "c"), third);
  EXPECT_EQ(addAttribute(root, "a"), first);
  EXPECT_EQ(root->getNextAttribute(first), second);
}

TEST_F(CreateAttribute, WalksInTheOrderOfCreation) {
  XDMAttrImpl* z = addAttribute(root, "z");
  XDMAttrImpl* a = addAttribute(root, "a");
  EXPECT_EQ(root->getNextAttribute(nullptr), z);
  EXPECT_EQ(root->getNextAttribute(z), a);
  EXPECT_EQ(root->getNextAttribute(a), nullptr);
}

TEST_F(CreateAttribute, AWalkFromAnAttributeOfAnotherElementEnds) {
  addAttribute(root, "id");
  addAttribute(root, "kind");
  XDMElemImpl* child = addChild(root, "b");
  XDMAttrImpl* stranger = addAttribute(child, "id");
  addAttribute(child, "kind");
  EXPECT_EQ(root->getNextAttribute(stranger), nullptr);
}

TEST_F(CreateNamespace, MakesASecondDeclarationOfAPrefix) {
  XDMNSImpl* first = root->createNamespace(kv("p"), kv("u"));
  XDMNSImpl* second = root->createNamespace(kv("p"), kv("v"));
  EXPECT_NE(first, second);
  EXPECT_EQ(root->getNamespaces(), 2);
  EXPECT_EQ(root->lookupNamespace(kv("p")), first);
}

TEST_F(CreateNamespace, AWalkFromADeclarationOfAnotherElementEnds) {
  root->createNamespace(kv("p"), kv("u"));
  XDMElemImpl* child = addChild(root, "b");
  XDMNSImpl* stranger = child->createNamespace(kv("p"), kv("u"));
  child->createNamespace(kv("q"), kv("v"));
  EXPECT_EQ(root->getNextNamespace(stranger), nullptr);
}

TEST_F(CreateNamespace, LookUpReachesTheRoot) {
  XDMNSImpl* declaration = root->createNamespace(kv("p"), kv("u"));
  XDMElemImpl* grandchild = addChild(addChild(root, "b"), "c");
  EXPECT_EQ(grandchild->lookupNamespace(kv("p")), declaration);
  EXPECT_EQ(grandchild->lookupNamespace(kv("q")), nullptr);
  EXPECT_EQ(grandchild->lookupNamespace(kv("P")), nullptr);
}

TEST_F(CreateNamespace, LookUpTakesTheNearestDeclaration) {
  root->createNamespace(kv("p"), kv("u"));
  XDMElemImpl* child = addChild(root, "b");
  XDMNSImpl* nearest = child->createNamespace(kv("p"), kv("v"));
  EXPECT_EQ(addChild(child, "c")->lookupNamespace(kv("p")), nearest);
}

TEST_F(CreateNamespace, LookUpTakesNullAndEmptyForTheDefaultNamespace) {
  XDMNSImpl* declaration = root->createNamespace(KvbString(), kv("u"));
  EXPECT_EQ(root->lookupNamespace(kv("")), declaration);
  EXPECT_EQ(root->lookupNamespace(KvbString()), declaration);
}

TEST(RootXPath, HasThePrefixThatItWasMadeWith) {
  EXPECT_EQ(str(Model("r").root->getXPath()), "/r");
  EXPECT_EQ(str(Model("r", "ns").root->getXPath()), "/ns:r");
}

TEST_F(NodeXPath, ExtendsTheParents) {
  XDMElemImpl* item = addChild(root, "item", "p");
  EXPECT_EQ(str(item->getXPath()), "/a/p:item");
  EXPECT_EQ(str(addAttribute(item, "id")->getXPath()), "/a/p:item/@id");
  XDMNSImpl* q = root->createNamespace(kv("q"), kv("u"));
  EXPECT_EQ(str(addAttribute(item, "id", q)->getXPath()), "/a/p:item/@q:id");
}

TEST_F(NodeXPath, OfAnAttributeInADefaultNamespaceHasNoPrefix) {
  XDMNSImpl* declaration = root->createNamespace(kv(""), kv("u"));
  EXPECT_EQ(str(addAttribute(root, "id", declaration)->getXPath()), "/a/@id");
}

TEST_F(NodeXPath, BelowAParentWithoutXPathIsNull) {
  EXPECT_TRUE(root->setXPath(kv("")));
  XDMElemImpl* child = root->createChild(kv(""), kv("b"), &created);
  EXPECT_TRUE(created);
  EXPECT_TRUE(child->getXPath().isNull());
  EXPECT_EQ(model.error(), catalogue(29, "(XPath)"));
}

TEST_F(NodeXPath, MissingMakesNoAttribute) {
  root->setXPath(kv(""));
  EXPECT_EQ(root->createAttribute(nullptr, kv("id"), &created), nullptr);
  EXPECT_EQ(model.error(), catalogue(29, "(XPath)"));
  EXPECT_EQ(root->getNextAttribute(nullptr), nullptr);
}

TEST_F(NodeXPath, StaysWhenANamespaceChanges) {
  XDMElemImpl* child = addChild(root, "b");
  XDMElemImpl* grandchild = addChild(child, "c");
  child->setNamespace(root->createNamespace(kv("p"), kv("u")));
  EXPECT_EQ(str(child->getXPath()), "/a/b");
  EXPECT_EQ(str(grandchild->getXPath()), "/a/b/c");
  EXPECT_EQ(str(addChild(child, "d")->getXPath()), "/a/b/d");
}

TEST_F(NodeXPath, IsStoredWithoutBeingChecked) {
  EXPECT_TRUE(root->setXPath(kv("no such [path")));
  EXPECT_EQ(str(root->getXPath()), "no such [path");
  EXPECT_EQ(model.error(), "");
}

}  // namespace

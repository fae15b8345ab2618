// Tests the marking pass and the namespace prolog.
#include <gtest/gtest.h>

#include "kvxdmselected.h"
#include "model.h"

namespace {

std::vector<std::string> stepsOf(const XDMElemImpl* element) {
  std::vector<std::string> steps;
  for (int i = 0; i < element->getSelectedXPaths(); ++i) steps.push_back(str(element->getSelectedXPath(i)));
  return steps;
}

std::vector<std::string> stepsOf(const XDMAttrImpl* attribute) {
  std::vector<std::string> steps;
  for (int i = 0; i < attribute->getSelectedXPaths(); ++i) steps.push_back(str(attribute->getSelectedXPath(i)));
  return steps;
}

using Steps = std::vector<std::string>;

/** a/b/r with children c1 and c2; attributes k on b and id on r. */
class Marking : public testing::Test {
 protected:
  XDMColumnImpl* select(XDMNode* node, const char* ownXPath = "") {
    auto* column = static_cast<XDMColumnImpl*>(model.main.selectAsColumn(node, kv(""), 0));
    KvbString error;
    if (*ownXPath && !column->setXPath(kv(ownXPath), &error)) ADD_FAILURE() << str(error);
    return column;
  }

  Model model;
  XDMElemImpl* a = model.root;
  XDMElemImpl* b = addChild(a, "b");
  XDMElemImpl* r = addChild(b, "r");
  XDMElemImpl* c1 = addChild(r, "c1");
  XDMElemImpl* c2 = addChild(r, "c2");
  XDMAttrImpl* k = addAttribute(b, "k");
  XDMAttrImpl* id = addAttribute(r, "id");
};

TEST_F(Marking, GivesEveryNodeOnThePathItsStep) {
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(a), Steps{"a"});
  EXPECT_EQ(stepsOf(b), Steps{"b"});
  EXPECT_EQ(stepsOf(r), Steps{"r"});
  EXPECT_EQ(stepsOf(c1), Steps{"c1"});
  EXPECT_EQ(stepsOf(c2), Steps{});
}

TEST_F(Marking, FlagsEveryProperAncestorOfASelectedElement) {
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_TRUE(a->hasSelectedChild());
  EXPECT_TRUE(b->hasSelectedChild());
  EXPECT_TRUE(r->hasSelectedChild());
  EXPECT_FALSE(c1->hasSelectedChild());
}

TEST_F(Marking, AnAttributeFlagsTheAncestorsOfItsElementButNotTheElement) {
  select(id);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(id), Steps{"@id"});
  EXPECT_EQ(stepsOf(r), Steps{"r"});
  EXPECT_TRUE(a->hasSelectedChild());
  EXPECT_TRUE(b->hasSelectedChild());
  EXPECT_FALSE(r->hasSelectedChild());
}

TEST_F(Marking, AnAttributeOfTheRootFlagsNoElement) {
  XDMAttrImpl* attribute = addAttribute(a, "v");
  select(attribute);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(a), Steps{"a"});
  EXPECT_EQ(stepsOf(attribute), Steps{"@v"});
  EXPECT_FALSE(a->hasSelectedChild());
}

TEST_F(Marking, SharedAncestorsCarryASharedStepOnce) {
  select(c1);
  select(c2);
  select(id);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(a), Steps{"a"});
  EXPECT_EQ(stepsOf(r), Steps{"r"});
}

TEST_F(Marking, StepsAreSpelledAsTheColumnsXPathSpellsThem) {
  select(c1, "/a/b[1]/r/c1[2]");
  select(c2);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(b), (Steps{"b[1]", "b"}));
  EXPECT_EQ(stepsOf(c1), Steps{"c1[2]"});
  EXPECT_EQ(stepsOf(c2), Steps{"c2"});
}

TEST_F(Marking, ASlashInAPredicateIsCutLikeAnyOther) {
  ASSERT_TRUE(c1->setXPath(kv("/a/b/r/c1[x/y]")));
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(c1), Steps{"y]"});
  EXPECT_EQ(stepsOf(r), Steps{"c1[x"});
  EXPECT_EQ(stepsOf(b), Steps{"r"});
  EXPECT_EQ(stepsOf(a), Steps{"b"});
}

TEST_F(Marking, AnXPathWithTooFewStepsLeavesEmptyStepsOnTheAncestors) {
  select(c1, "/a/b");
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(c1), Steps{"b"});
  EXPECT_EQ(stepsOf(r), Steps{"a"});
  EXPECT_EQ(stepsOf(b), Steps{""});
  EXPECT_EQ(stepsOf(a), Steps{""});
}

TEST_F(Marking, OfTwoColumnsWithEqualXPathsTheLaterOneIsFound) {
  select(c1);
  XDMColumnImpl* later = select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(model.main.columnByXPath("/a/b/r/c1"), later);
  EXPECT_EQ(model.main.columnByXPath("/a/b"), nullptr);
}

TEST_F(Marking, ForAQueryThatLooksNoneUpNoColumnIsEntered) {
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  ASSERT_TRUE(model.main.markSelected(false));
  EXPECT_EQ(model.main.columnByXPath("/a/b/r/c1"), nullptr);
  EXPECT_EQ(stepsOf(r), Steps{"r"});
}

TEST_F(Marking, ColumnsOfOneElementMarkItsAncestorsByTheirOwnPaths) {
  select(c1, "/a/b[1]/r/c1");
  select(c2, "/a/b[2]/r/c2");
  select(c1, "/a[3]/b[2]/r/c1");
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(r), Steps{"r"});
  EXPECT_EQ(stepsOf(b), (Steps{"b[1]", "b[2]"}));
  EXPECT_EQ(stepsOf(a), (Steps{"a", "a[3]"}));
}

TEST_F(Marking, ASecondPassLeavesNoTraceOfARemovedColumn) {
  XDMColumnImpl* removed = select(c1);
  XDMColumnImpl* removedAttribute = select(id);
  select(k);
  ASSERT_TRUE(model.main.markSelected());
  model.main.removeColumn(removed);
  model.main.removeColumn(removedAttribute);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(r), Steps{});
  EXPECT_EQ(stepsOf(c1), Steps{});
  EXPECT_EQ(stepsOf(id), Steps{});
  EXPECT_FALSE(r->hasSelectedChild());
  EXPECT_FALSE(b->hasSelectedChild());
  EXPECT_TRUE(a->hasSelectedChild());
  EXPECT_EQ(model.main.columnByXPath("/a/b/r/c1"), nullptr);
}

TEST_F(Marking, ClearingVisitsTheAttributesOfAnElementWithoutSelectedChild) {
  XDMAttrImpl* attribute = addAttribute(a, "v");
  XDMColumnImpl* removed = select(attribute);
  ASSERT_TRUE(model.main.markSelected());
  model.main.removeColumn(removed);
  select(k);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(stepsOf(attribute), Steps{});
}

TEST_F(Marking, AMarkedElementCountsAsVisited) {
  XDMElemImpl* unvisited = addUnvisitedChild(a, "u");
  select(unvisited);
  ASSERT_TRUE(model.main.markSelected());
  addUnvisitedChild(a, "behind");
  EXPECT_EQ(childNames(a), (std::vector<std::string>{"b", "u", "behind"}));
}

TEST_F(Marking, WithoutRootIs1423) {
  XDMMainImpl empty(0);
  EXPECT_FALSE(empty.markSelected());
  EXPECT_EQ(str(empty.errorMessage()), catalogue(1423));
}

TEST_F(Marking, WithoutColumnsIs1441) {
  EXPECT_FALSE(model.main.markSelected());
  EXPECT_EQ(model.error(), catalogue(1441));
}

// The namespace prolog

TEST_F(Marking, WithoutDeclarationsThePrologIsEmpty) {
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()), "");
}

TEST_F(Marking, ThePrologHasALineForEachPrefixInTheOrderMet) {
  a->createNamespace(kv("p"), kv("urn:p"));
  a->createNamespace(kv(""), kv("urn:d"));
  r->createNamespace(kv("q"), kv("urn:q"));
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()),
            "\n\ndeclare namespace q = \"urn:q\";\ndeclare namespace p = \"urn:p\";\n"
            "declare default element namespace \"urn:d\";\n");
}

TEST_F(Marking, DeclarationsBesideTheSelectedPathDoNotCount) {
  c2->createNamespace(kv("p"), kv("urn:p"));
  select(c1);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()), "");
}

TEST_F(Marking, ASelectedAttributeBringsTheDeclarationsOfItsElement) {
  r->createNamespace(kv("p"), kv("urn:p"));
  select(id);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()), "\n\ndeclare namespace p = \"urn:p\";\n");
}

TEST_F(Marking, APrefixWithTheSameURITwiceIsDeclaredOnce) {
  a->createNamespace(kv("p"), kv("urn:p"));
  r->createNamespace(kv("p"), kv("urn:p"));
  select(c1);
  select(c2);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()), "\n\ndeclare namespace p = \"urn:p\";\n");
}

TEST_F(Marking, URIsThatDifferInCaseAreTwo) {
  a->createNamespace(kv("p"), kv("urn:p"));
  r->createNamespace(kv("p"), kv("urn:P"));
  select(c1);
  EXPECT_FALSE(model.main.markSelected());
  EXPECT_EQ(model.error(), catalogue(1442, "p", "urn:p", "urn:P"));
}

TEST_F(Marking, APrefixWithTwoURIsIs1442AndKeepsTheLinesWritten) {
  a->createNamespace(kv("p"), kv("urn:1"));
  r->createNamespace(kv("p"), kv("urn:2"));
  select(c1);
  EXPECT_FALSE(model.main.markSelected());
  EXPECT_EQ(model.error(), catalogue(1442, "p", "urn:1", "urn:2"));
  EXPECT_EQ(str(model.main.namespaceProlog()), "\n\ndeclare namespace p = \"urn:2\";\n");
}

TEST_F(Marking, AFailedPassCanBeRepeatedOnceTheColumnIsGone) {
  a->createNamespace(kv("p"), kv("urn:1"));
  r->createNamespace(kv("p"), kv("urn:2"));
  XDMColumnImpl* removed = select(c1);
  select(k);
  EXPECT_FALSE(model.main.markSelected());
  model.main.removeColumn(removed);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()), "\n\ndeclare namespace p = \"urn:1\";\n");
}

TEST_F(Marking, ADeclarationWithoutURIIsWrittenAtEachMeeting) {
  a->createNamespace(kv(""), kv(""));
  select(c1);
  select(c2);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()),
            "\n\ndeclare default element namespace \"\";\ndeclare default element namespace \"\";\n");
}

// Distance to the element that decides the row

TEST_F(Marking, TheDistanceCountsLevelsDownToTheRow) {
  r->setDecidesRow(true);
  EXPECT_EQ(a->parentOfDecidingRow(), 2);
  EXPECT_EQ(b->parentOfDecidingRow(), 1);
  EXPECT_EQ(r->parentOfDecidingRow(), 0);
  EXPECT_EQ(c1->parentOfDecidingRow(), 0);
}

TEST_F(Marking, ADistanceOfZeroIsFoundOutAnewWhenARowMarkChanges) {
  EXPECT_EQ(a->parentOfDecidingRow(), 0);
  b->setDecidesRow(true);
  EXPECT_EQ(a->parentOfDecidingRow(), 1);
}

TEST_F(Marking, ADistanceAboveZeroIsKeptForGood) {
  r->setDecidesRow(true);
  EXPECT_EQ(a->parentOfDecidingRow(), 2);
  b->setDecidesRow(true);
  EXPECT_EQ(a->parentOfDecidingRow(), 2);
  b->setDecidesRow(false);
  EXPECT_EQ(a->parentOfDecidingRow(), 2);
}

TEST_F(Marking, TheFirstBranchWithARowGivesTheDistance) {
  XDMElemImpl* second = addChild(a, "second");
  EXPECT_EQ(b->parentOfDecidingRow(), 0);
  second->setDecidesRow(true);
  EXPECT_EQ(a->parentOfDecidingRow(), 1);
}

// The list of steps

TEST(SelectedSteps, AreDistinctInOrderOfArrivalAndEmptyAfterClear) {
  SelectedSteps steps;
  for (const char* step : {"b", "a", "b"}) EXPECT_EQ(steps.add(step), SelectedSteps::Added::yes);
  ASSERT_EQ(steps.getCount(), 2);
  EXPECT_EQ(steps.get(0), "b");
  EXPECT_EQ(steps.get(1), "a");
  EXPECT_EQ(steps.get(2), "");
  EXPECT_EQ(steps.get(-1), "");
  steps.clear();
  EXPECT_EQ(steps.getCount(), 0);
}

TEST(SelectedSteps, TakeOthersAfterClear) {
  SelectedSteps steps;
  for (const char* step : {"a step that is long enough for memory of its own", "b"}) steps.add(step);
  steps.clear();
  steps.add("c");
  ASSERT_EQ(steps.getCount(), 1);
  EXPECT_EQ(steps.get(0), "c");
}

TEST(SelectedSteps, CountAnEmptyStepOnce) {
  SelectedSteps steps;
  for (const char* step : {"", "a", ""}) steps.add(step);
  ASSERT_EQ(steps.getCount(), 2);
  EXPECT_EQ(steps.get(0), "");
  EXPECT_EQ(steps.get(1), "a");
}

}  // namespace

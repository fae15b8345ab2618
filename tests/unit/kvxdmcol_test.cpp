// Tests kvxdmcol.cpp and the main object's part in columns: selection, names, and values that hide the node's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model.h"

namespace {

using ::testing::ElementsAre;

class Columns : public ::testing::Test {
 protected:
  XDMColumn* select(XDMNode* node, const char* name = "") { return node->selectAsColumn(kv(name), false); }

  std::vector<std::string> names() {
    std::vector<std::string> names;
    for (int i = 0; i < model.main.getSelectedColumns(); ++i) {
      names.push_back(str(model.main.getSelectedColumn(i)->getName()));
    }
    return names;
  }

  Model model;
  XDMElemImpl* price = addChild(model.root, "price");
  KvbString error = kv("untouched");
};

using ColumnNames = Columns;
using SelectedColumn = Columns;
using RemovedColumn = Columns;

TEST_F(Columns, StandInTheOrderOfSelection) {
  XDMColumn* second = select(price);
  XDMColumn* first = select(model.root);
  EXPECT_EQ(model.main.getSelectedColumns(), 2);
  EXPECT_EQ(model.main.getSelectedColumn(0), second);
  EXPECT_EQ(model.main.getSelectedColumn(1), first);
}

TEST_F(Columns, OutOfRangeAreNull) {
  select(price);
  EXPECT_EQ(model.main.getSelectedColumn(-1), nullptr);
  EXPECT_EQ(model.main.getSelectedColumn(1), nullptr);
}

TEST_F(Columns, WithoutANameAreNamedAfterTheirNodes) {
  XDMElemImpl* first = addChild(model.root, "id");
  XDMElemImpl* second = addChild(price, "id");
  XDMAttrImpl* third = addAttribute(price, "id");
  for (XDMNode* node : std::initializer_list<XDMNode*>{first, second, third}) select(node);
  EXPECT_THAT(names(), ElementsAre("id", "id1", "id2"));
}

TEST_F(Columns, SelectingANodeTwiceMakesTwoColumns) {
  EXPECT_NE(select(price), select(price));
  EXPECT_THAT(names(), ElementsAre("price", "price1"));
}

TEST_F(Columns, RefuseANameThatIsInUse) {
  XDMColumn* first = select(price, "a");
  EXPECT_EQ(select(price, "a"), nullptr);
  EXPECT_EQ(model.error(), catalogue(267, "a"));
  EXPECT_EQ(model.main.getSelectedColumns(), 1);
  EXPECT_EQ(model.main.getSelectedColumn(0), first);
}

TEST_F(Columns, NamesDifferByCase) {
  EXPECT_NE(select(price, "a"), nullptr);
  EXPECT_NE(select(price, "A"), nullptr);
}

TEST_F(Columns, RefuseANodeWithoutANameWhenNoneIsGiven) {
  XDMElemImpl* nameless = addChild(model.root, "");
  EXPECT_EQ(select(nameless), nullptr);
  EXPECT_EQ(model.error(), catalogue(267, ""));
  EXPECT_EQ(model.main.getSelectedColumns(), 0);
}

TEST_F(Columns, KeepTheGroupLevelThatTheyAreGiven) {
  EXPECT_EQ(price->selectAsColumn(kv("plain"), false)->getIsGroupBy(), 0);
  EXPECT_EQ(price->selectAsColumn(kv("group"), true)->getIsGroupBy(), 1);
  XDMColumn* deep = model.main.selectAsColumn(price, kv("deep"), 3);
  EXPECT_EQ(deep->getIsGroupBy(), 3);
  deep->setIsGroupBy(true);
  EXPECT_EQ(deep->getIsGroupBy(), 1);
  deep->setIsGroupBy(false);
  EXPECT_EQ(deep->getIsGroupBy(), 0);
}

TEST_F(ColumnNames, AreNumberedFromTheSecondOn) {
  EXPECT_EQ(str(model.main.createColumnName(kv("x"))), "x");
  EXPECT_EQ(str(model.main.createColumnName(kv("x"))), "x1");
  EXPECT_EQ(str(model.main.createColumnName(kv("x"))), "x2");
}

TEST_F(ColumnNames, StayWhileNumberedNamesDependOnThem) {
  model.main.createColumnName(kv("x"));
  model.main.createColumnName(kv("x"));
  model.main.removeColumnName(kv("x"));
  EXPECT_FALSE(model.main.addColumnName(kv("x")));
  EXPECT_EQ(str(model.main.createColumnName(kv("x"))), "x2");
}

TEST_F(ColumnNames, WithANumberAreNotRegistered) {
  select(price);
  select(price);
  EXPECT_NE(select(price, "price1"), nullptr);
  EXPECT_THAT(names(), ElementsAre("price", "price1", "price1"));
}

TEST_F(ColumnNames, GivenOnesCountForGeneratedOnes) {
  select(price, "price");
  EXPECT_EQ(str(select(price)->getName()), "price1");
}

TEST_F(ColumnNames, GeneratedOnesCountForGivenOnes) {
  select(price);
  EXPECT_EQ(select(price, "price"), nullptr);
  EXPECT_EQ(model.error(), catalogue(267, "price"));
}

TEST_F(ColumnNames, CanBeUsedAgainOnceRemoved) {
  EXPECT_TRUE(model.main.addColumnName(kv("a")));
  model.main.removeColumnName(kv("a"));
  EXPECT_TRUE(model.main.addColumnName(kv("a")));
}

TEST_F(ColumnNames, RemovingAStrangerChangesNothing) {
  model.main.addColumnName(kv("a"));
  model.main.removeColumnName(kv("b"));
  EXPECT_FALSE(model.main.addColumnName(kv("a")));
}

TEST_F(ColumnNames, AreNotToldOfARenamedColumn) {
  select(price, "a")->setName(kv("b"));
  EXPECT_THAT(names(), ElementsAre("b"));
  EXPECT_EQ(select(price, "a"), nullptr);
  EXPECT_NE(select(price, "b"), nullptr);
}

TEST_F(SelectedColumn, ShowsTheNodesFormatUntilItHasItsOwn) {
  price->columnInfo().setFormat(kv("F"));
  XDMColumn* column = select(price);
  EXPECT_EQ(str(column->getFormat()), "F");
  column->setFormat(kv("G"));
  EXPECT_EQ(str(column->getFormat()), "G");
  EXPECT_EQ(str(price->getFormat()), "F");
  column->setFormat(kv(""));
  EXPECT_EQ(str(column->getFormat()), "F");
}

TEST_F(SelectedColumn, ShowsTheNodesInformatUntilItHasItsOwn) {
  price->columnInfo().setInformat(kv("F"));
  XDMColumn* column = select(price);
  EXPECT_EQ(str(column->getInformat()), "F");
  column->setInformat(kv("G"));
  EXPECT_EQ(str(column->getInformat()), "G");
  EXPECT_EQ(str(price->getInformat()), "F");
}

TEST_F(SelectedColumn, ShowsTheNodesDefaultUntilItHasItsOwn) {
  price->columnInfo().setDefault(kv("F"), &error);
  XDMColumn* column = select(price);
  EXPECT_EQ(str(column->getDefault()), "F");
  EXPECT_TRUE(column->setDefault(kv("G"), &error));
  EXPECT_EQ(str(column->getDefault()), "G");
  EXPECT_EQ(str(price->getDefault()), "F");
}

TEST_F(SelectedColumn, ShowsTheNodesXPathUntilItHasItsOwn) {
  XDMColumn* column = select(price);
  EXPECT_EQ(str(column->getXPath()), "/a/price");
  EXPECT_TRUE(column->setXPath(kv("/a/price[2]"), &error));
  EXPECT_EQ(str(column->getXPath()), "/a/price[2]");
  EXPECT_EQ(str(price->getXPath()), "/a/price");
}

TEST_F(SelectedColumn, HasItsXPathChecked) {
  XDMColumn* column = select(price);
  EXPECT_FALSE(column->setXPath(kv("/a/cost"), &error));
  EXPECT_EQ(str(error), catalogue(1445, "cost"));
  EXPECT_EQ(str(column->getXPath()), "/a/price");
}

TEST_F(SelectedColumn, CopiesTheTypeOfItsNode) {
  price->columnInfo().setType(2);
  XDMColumn* column = select(price);
  price->columnInfo().setType(3);
  EXPECT_EQ(column->getType(), 2);
  column->setType(0);
  EXPECT_EQ(column->getType(), 0);
}

TEST_F(SelectedColumn, ShowsTheNodesLengthUntilItHasItsOwn) {
  price->columnInfo().setMaximumLength(20);
  XDMColumn* column = select(price);
  EXPECT_EQ(column->getMaximumLength(), 20);
  column->setMaximumLength(30);
  EXPECT_EQ(column->getMaximumLength(), 30);
  EXPECT_EQ(price->getMaximumLength(), 20);
  column->setMaximumLength(0);
  EXPECT_EQ(column->getMaximumLength(), 20);
}

TEST_F(SelectedColumn, OfAnotherTypeThanStringHasNoLength) {
  price->columnInfo().setMaximumLength(20);
  XDMColumn* column = select(price);
  column->setMaximumLength(30);
  column->setType(2);
  EXPECT_EQ(column->getMaximumLength(), 0);
}

TEST_F(SelectedColumn, ShowsTheNodesValidValuesUntilItHasItsOwn) {
  price->columnInfo().addValidValue(kv("A"), &error);
  XDMColumn* column = select(price);
  EXPECT_EQ(column->getValidValues(), 1);
  EXPECT_EQ(str(column->getValidValue(0)), "A");
  EXPECT_EQ(column->getValidValue(1).length(), 0);
}

TEST_F(SelectedColumn, CopiesTheNodesValidValuesBeforeAddingItsFirst) {
  for (const char* value : {"B", "A"}) price->columnInfo().addValidValue(kv(value), &error);
  XDMColumn* column = select(price);
  EXPECT_TRUE(column->addValidValue(kv("C"), &error));
  EXPECT_TRUE(column->addValidValue(kv("C"), &error));
  std::vector<std::string> values;
  for (int i = 0; i < column->getValidValues(); ++i) values.push_back(str(column->getValidValue(i)));
  EXPECT_THAT(values, ElementsAre("B", "A", "C", "C"));
  EXPECT_EQ(price->getValidValues(), 2);
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(SelectedColumn, ChecksItsDefaultAgainstItsOwnValidValuesOnly) {
  price->columnInfo().addValidValue(kv("A"), &error);
  XDMColumn* column = select(price);
  EXPECT_TRUE(column->setDefault(kv("X"), &error));
  column->addValidValue(kv("B"), &error);
  EXPECT_FALSE(column->setDefault(kv("Y"), &error));
  EXPECT_TRUE(column->setDefault(kv("A"), &error));
  EXPECT_EQ(str(column->getDefault()), "A");
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(RemovedColumn, LeavesTheListAndFreesItsName) {
  XDMColumn* first = select(price, "a");
  XDMColumn* second = select(price, "b");
  model.main.removeColumn(first);
  EXPECT_EQ(model.main.getSelectedColumns(), 1);
  EXPECT_EQ(model.main.getSelectedColumn(0), second);
  EXPECT_NE(select(price, "a"), nullptr);
}

TEST_F(RemovedColumn, ByItsDestructorLeavesTheListToo) {
  delete static_cast<XDMColumnImpl*>(select(price, "a"));
  EXPECT_EQ(model.main.getSelectedColumns(), 0);
  EXPECT_NE(select(price, "a"), nullptr);
}

TEST_F(RemovedColumn, KeepsAGeneratedNameThatOthersWereMadeFrom) {
  XDMColumn* first = select(price);
  select(price);
  model.main.removeColumn(first);
  EXPECT_EQ(str(select(price)->getName()), "price2");
}

}  // namespace

// Tests kvxdmxqy_from_rows.cpp: whole rows-to-XML queries, and the loops over group columns.
#include <gtest/gtest.h>

#include "allocation_faults.h"
#include "from_rows_model.h"
#include "kvxdmcol.h"
#include "kvxdmxqy_text.h"
#include "model.h"

namespace {

const FromRowsShape& shapeNamed(std::string_view name) {
  for (const FromRowsShape& shape : fromRowsShapes()) {
    if (shape.name == name) return shape;
  }
  throw std::logic_error("no shape " + std::string(name));
}

class FromRowsText : public testing::TestWithParam<FromRowsShape> {};

TEST_P(FromRowsText, IsToTheLetterWithoutGrouping) { EXPECT_EQ(queryOf(GetParam(), false), textOf(GetParam(), false)); }

TEST_P(FromRowsText, IsToTheLetterWithGrouping) { EXPECT_EQ(queryOf(GetParam(), true), textOf(GetParam(), true)); }

INSTANTIATE_TEST_SUITE_P(Shapes, FromRowsText, testing::ValuesIn(fromRowsShapes()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FromRowsQueryTest, WithoutStreamingTheOptionFollowsTheProlog) {
  XDMMainPtr main = modelOf(shapeNamed("PrefixedNames"));
  KvbString error;
  const std::string query = str(main->genXQueryFromColumns(false, false, &error));
  EXPECT_EQ(query.rfind("xquery version \"1.0\";\ndeclare boundary-space preserve;\n"
                        "\n\ndeclare namespace p = \"urn:p\";\n"
                        "declare option ddtek:xml-streaming \"no\";\n"
                        "\n\ndeclare function local:gt(\n",
                        0),
            0U)
      << query;
}

TEST(FromRowsQueryTest, GivesTheSameTextAgain) {
  const FromRowsShape& shape = shapeNamed("ElementsFurtherUpInAGroup");
  XDMMainPtr main = modelOf(shape);
  KvbString error;
  for (bool groupRows : {true, false, true}) {
    EXPECT_EQ(str(main->genXQueryFromColumns(true, groupRows, &error)), textOf(shape, groupRows));
  }
}

TEST(FromRowsQueryTest, SuccessLeavesTheErrorUntouched) {
  XDMMainPtr main = modelOf(shapeNamed("RootAsTheRow"));
  KvbString error = kv("before");
  EXPECT_GT(main->genXQueryFromColumns(true, false, &error).length(), 0);
  EXPECT_EQ(str(error), "before");
}

TEST(FromRowsQueryTest, EmptyModelFailsWith1423) {
  XDMMainPtr main(kvxdmCreateMain(0));
  KvbString error;
  EXPECT_EQ(str(main->genXQueryFromColumns(true, false, &error)), "");
  EXPECT_EQ(str(error), catalogue(1423));
}

TEST(FromRowsQueryTest, NoColumnFailsWith1441) {
  XDMMainPtr main = loadModel(rowInDept);
  KvbString error;
  EXPECT_EQ(str(main->genXQueryFromColumns(true, false, &error)), "");
  EXPECT_EQ(str(error), catalogue(1441));
}

TEST(FromRowsQueryTest, PrefixWithTwoUrisFailsWith1442) {
  XDMMainPtr main = loadModel(R"(<xdm version="1.0"><element name="a"><namespace prefix="p" uri="urn:1"/>
    <element name="b"><namespace prefix="p" uri="urn:2"/></element></element></xdm>)");
  selectColumn(main.get(), "/a/b", "b");
  KvbString error;
  EXPECT_EQ(str(main->genXQueryFromColumns(true, false, &error)), "");
  EXPECT_EQ(str(error), catalogue(1442, "p", "urn:1", "urn:2"));
}

// A failure of the element builder leaves the error as it is; a later one puts message 29 there.
TEST(FromRowsQueryTest, ExhaustedMemoryGivesTheWholeTextOrNone) {
  const FromRowsShape& shape = shapeNamed("GroupsOnElementAndAttributesByLevel");
  const std::string expected = textOf(shape, true);
  XDMMainPtr main = modelOf(shape);
  bool untouched = false, reported = false;
  sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    KvbString error = kv("before"), query;
    bool met = false;
    {
      AllocationFaults faults(nth, extent);
      query = main->genXQueryFromColumns(true, true, &error);
      met = faults.met();
    }
    EXPECT_TRUE(str(query) == expected || (met && str(query).empty())) << str(query);
    untouched |= met && str(error) == "before";
    reported |= str(error) == catalogue(29, "(XQuery)");
    return met;
  });
  EXPECT_TRUE(untouched);
  EXPECT_TRUE(reported);
}

class GroupForLoopTest : public testing::Test {
 protected:
  XDMColumnImpl* column(const char* name, int level) {
    return static_cast<XDMColumnImpl*>(model.main.selectAsColumn(model.root, kv(name), level));
  }
  void build(XDMColumnImpl* column) { model.main.buildGroupForLoop(column, predicate, loop, closing); }

  Model model;
  QueryText predicate, loop, closing;
};

TEST_F(GroupForLoopTest, PlainColumnWritesNothing) {
  build(column("c", 0));
  EXPECT_TRUE(predicate.empty() && loop.empty() && closing.empty());
}

TEST_F(GroupForLoopTest, FirstGroupColumnLoopsOverAllRows) {
  build(column("dept", 1));
  EXPECT_EQ(loop.text(), "for $dept in distinct-values(/table/row/dept)\nreturn\n(");
  EXPECT_EQ(predicate.text(), "dept = $dept");
  EXPECT_EQ(closing.text(), ")");
}

TEST_F(GroupForLoopTest, NextGroupColumnLoopsOverTheRowsOfTheGroup) {
  build(column("dept", 1));
  build(column("team", 1));
  EXPECT_EQ(loop.text(),
            "for $dept in distinct-values(/table/row/dept)\nreturn\n("
            "for $team in distinct-values(/table/row[dept = $dept]/team)\nreturn\n(");
  EXPECT_EQ(predicate.text(), "dept = $dept and team = $team");
  EXPECT_EQ(closing.text(), "))");
}

TEST_F(GroupForLoopTest, ExhaustedMemoryIsThrownWithoutAMessage) {
  XDMColumnImpl* dept = column("dept", 1);
  model.main.setErrorMessage(kv("before"));
  {
    AllocationFaults faults(1, AllocationFaults::Extent::once);
    EXPECT_THROW(build(dept), std::bad_alloc);
  }
  EXPECT_EQ(model.error(), "before");
}

}  // namespace

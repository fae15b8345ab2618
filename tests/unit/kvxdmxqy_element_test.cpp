// Tests kvxdmxqy_element.cpp: what the shapes of whole queries don't show of the element builder.
#include <gtest/gtest.h>

#include "allocation_faults.h"
#include "from_rows_model.h"
#include "kvxdmelem.h"
#include "kvxdmxqy_text.h"

namespace {

constexpr short gt = -0x8000;

short requestsOf(const FromRowsQuery& query) {
  int requests = 0;
  for (const LibraryText& function : libraryTexts()) {
    if (query.declares(function.name)) requests |= function.request;
  }
  return static_cast<short>(requests);
}

/** A model whose columns are marked, and one call of the builder. */
class ElementBuilderTest : public testing::Test {
 protected:
  void make(std::string_view document, const std::vector<SelectedNode>& columns) {
    main = loadModel(document);
    for (const SelectedNode& selected : columns) selectNode(main.get(), selected);
    ASSERT_TRUE(impl()->markSelected());
  }

  XDMMainImpl* impl() { return static_cast<XDMMainImpl*>(main.get()); }
  XDMElemImpl* element(const char* xpath) { return implOf(elementAt(main.get(), xpath)); }

  bool build(XDMElemImpl* start, bool groupRows) {
    return impl()->genElementFromColumns(start, &functions, inRowLoop, groupRows, xpath, rowPath, predicate,
                                         rowSelector, out);
  }
  std::string bodyOf(bool groupRows) {
    EXPECT_TRUE(build(impl()->root(), groupRows));
    return str(out.text());
  }

  XDMMainPtr main;
  short functions = 0;
  bool inRowLoop = false;
  std::string_view xpath, rowPath = "/table/row";
  QueryText out;
  const char* predicate = "";
  const char* rowSelector = "[1]";
};

TEST_F(ElementBuilderTest, UnselectedElementWritesNothing) {
  make(rowInRoot, {{"/a/head", "head"}});
  EXPECT_TRUE(build(element("/a/r"), false));
  EXPECT_EQ(out.text(), "");
  EXPECT_EQ(functions, 0);
}

TEST_F(ElementBuilderTest, AppendsToTheOutputAndAddsRequests) {
  make(rowInRoot, {{"/a/head", "head"}});
  out << "before ";
  functions = 0x0010;
  EXPECT_EQ(bodyOf(false), R"(before <a>{local:e2e("head", /table/row[1]/head)}</a>)");
  EXPECT_EQ(functions, static_cast<short>(0xA010));
}

TEST_F(ElementBuilderTest, StartsFromTheXPathAndSourceGiven) {
  make(rowInRoot, {{"/a/head", "head"}});
  xpath = "/a";
  rowPath = "$row";
  predicate = "g = $g";
  rowSelector = nullptr;
  EXPECT_TRUE(build(element("/a/head"), true));
  EXPECT_EQ(out.text(), R"(local:e2e("head", $row[g = $g]/head))");
}

TEST_F(ElementBuilderTest, ConstructorRequestsLocalGtOnly) {
  make(rowWithAttributeAndElement, {{"/a/r/@k", "k"}});
  bodyOf(false);
  EXPECT_EQ(functions, gt);
}

TEST_F(ElementBuilderTest, RequestsTheFunctionsThatItCallsAndNothingElse) {
  for (const FromRowsShape& shape : fromRowsShapes()) {
    for (bool groupRows : {false, true}) {
      main = modelOf(shape);
      ASSERT_TRUE(impl()->markSelected());
      functions = 0;
      out.truncate(0);
      EXPECT_EQ(bodyOf(groupRows), shape.query(groupRows).body);
      EXPECT_EQ(functions, requestsOf(shape.query(groupRows))) << shape.name;
    }
  }
}

TEST_F(ElementBuilderTest, AttributeSeparatorStartsAfreshAtEachStep) {
  make(rowWithX, {{"/a/r/x/@k", "k"}, {"/a/r/x/@m", "m", 0, "/a/r/x[2]/@m"}});
  EXPECT_EQ(bodyOf(false), R"(<a>{for $row in /table/row
return
(
<r>{local:e2e_na("x", (local:ma("k", $row/k))),
local:e2e_na("x", (local:ma("m", $row/m)))}</r>)}</a>)");
}

TEST_F(ElementBuilderTest, AttributeWithTwoStepsIsWrittenForEachWithAColumn) {
  make(rowWithX, {{"/a/r/x/@k", "k1"}, {"/a/r/x/@k", "k2", 0, "/a/r/x/@K"}});
  EXPECT_EQ(bodyOf(false), R"(<a>{for $row in /table/row
return
(
<r>{local:e2e_na("x", (local:ma("k", $row/k1),local:ma("k", $row/k2)))}</r>)}</a>)");
}

TEST_F(ElementBuilderTest, AttributeWithoutStepIsSkippedInTheGroupLookUp) {
  make(rowInDept, {{"/a/dept/@site", "site", 1}});
  EXPECT_EQ(bodyOf(true), R"(<a>{for $site in distinct-values(/table/row/site)
return
(local:e2e_na("dept", (local:msa("site", $site))))}</a>)");
}

TEST_F(ElementBuilderTest, PlainColumnOfTheElementHidesGroupColumnsOfItsAttributes) {
  make(rowInDept, {{"/a/dept", "dept"}, {"/a/dept/@id", "id", 1}});
  EXPECT_EQ(bodyOf(true), R"(<a>{local:e2e("dept", /table/row[1]/dept,
  (local:ma("id", /table/row[1]/id)))}</a>)");
}

// Outside a row loop every step extends the row path anew, and a step's selector after the rows is its own.
TEST_F(ElementBuilderTest, EachStepAboveTheRowsStartsFromTheSameSource) {
  make(rowBelowElements,
       {{"/a/dept/@id", "id", 1}, {"/a/dept/team/r/c", "c"}, {"/a/dept/head", "head", 0, "/a/dept[2]/head"}});
  EXPECT_EQ(bodyOf(true), R"(<a>{for $id in distinct-values(/table/row/id)
return
(local:e2ec_nac("dept", (local:msa("id", $id)),
  (local:e2ec("team", )"
                          "\n"
                          R"((let $rows := /table/row[id = $id]
for $row in $rows
return
(
(<r>{local:e2e("c", $row/c)}</r>)))))),
local:e2ec("dept", (local:e2e("head", /table/row[id = $id][1]/head),
local:e2ec("team", )"
                          "\n"
                          R"((let $rows := /table/row[id = $id]
for $row in $rows
return
(
(<r}</r>)))))))}</a>)");
}

/**
 * x once stood above the row and remembers the distance, so it opens a group loop though it stands in a row loop now.
 */
class GroupLoopInARowLoopTest : public ElementBuilderTest {
 protected:
  void makeWith(const std::vector<SelectedNode>& columns) {
    main = loadModel(R"(<xdm version="1.0"><element name="a"><element name="r"><element name="c"/></element>
      <element name="x"><attribute name="g"/><element name="z"/><element name="y" decides="true"/></element>
      </element></xdm>)");
    ASSERT_EQ(element("/a/x")->parentOfDecidingRow(), 1);
    element("/a/r")->setDecidesRow(true);
    for (const SelectedNode& selected : columns) selectNode(main.get(), selected);
    ASSERT_TRUE(impl()->markSelected());
  }
};

TEST_F(GroupLoopInARowLoopTest, RowPathStaysExtendedForTheChildren) {
  makeWith({{"/a/r/c", "c"}, {"/a/x/@g", "g", 1}, {"/a/x/z", "z"}});
  EXPECT_EQ(bodyOf(true), R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e("c", $row/c)}</r>),
(
if ($row is $rows[last()]) then
   for $g in distinct-values(/table/row/g)
return
(local:e2ec_nac("x", (local:msa("g", $g)),
  (local:e2e("z", $row[g = $g][g = $g]/z))))
else
   ()))}</a>)");
}

TEST_F(GroupLoopInARowLoopTest, RowPathStaysExtendedForLaterSteps) {
  makeWith({{"/a/r/c", "c"}, {"/a/x/@g", "g", 1}, {"/a/x/z", "z", 0, "/a/x[2]/z"}});
  EXPECT_EQ(bodyOf(true), R"(<a>{
(let $rows := /table/row
for $row in $rows
return
(
<r>{local:e2e("c", $row/c)}</r>),
(
if ($row is $rows[last()]) then
   for $g in distinct-values(/table/row/g)
return
(local:e2e_na("x", (local:msa("g", $g))),
local:e2ec("x", (local:e2e("z", $row[g = $g][g = $g][g = $g]/z))))
else
   ()))}</a>)");
}

// Columns with the XPath of another node: their steps stand on nodes below which no column is found.

TEST_F(ElementBuilderTest, RowLoopWithoutChildrenStandsInACallWithOtherParts) {
  make(rowAmongElements, {{"/a/dept/@id", "id"}, {"/a/dept/head", "head", 0, "/a/dept"}});
  EXPECT_EQ(bodyOf(true), R"(<a>{local:e2e("dept", /table/row[1]/head,
  (local:ma("id", /table/row[1]/id)),
(let $rows := /table/row
for $row in $rows
return
(
))}</a>)");
}

TEST_F(ElementBuilderTest, RowLoopWithoutChildrenStandsInAConstructorWithAttributes) {
  make(rowInRoot, {{"/a/@k", "k"}, {"/a/head", "head", 0, "/a/head/@other"}});
  EXPECT_EQ(bodyOf(true), R"(<a   k="{local:gt(/table/row[1]/k)}">{
(let $rows := /table/row
for $row in $rows
return
(
)}</a>)");
}

TEST_F(ElementBuilderTest, ConstructorWithAttributesOpensNoContentForSilentChildren) {
  make(rowInRoot, {{"/a/@k", "k"}, {"/a/head", "head", 0, "/a/head/@other"}});
  EXPECT_EQ(bodyOf(false), R"(<a   k="{local:gt(/table/row[1]/k)}"}</a>)");
}

TEST_F(ElementBuilderTest, ElementWithSilentChildrenRequestsTheFunctionWithoutChildren) {
  make(rowInDept, {{"/a/dept/@id", "id"}, {"/a/dept/r", "r", 0, "/a/dept/r/@other"}});
  element("/a")->setDecidesRow(true);
  EXPECT_EQ(bodyOf(false), R"(<a>{local:e2e_na("dept", (local:ma("id", /table/row[1]/id)))}</a>)");
  EXPECT_EQ(functions, static_cast<short>(0xC020));
}

TEST_F(ElementBuilderTest, TreeAtTheNestingLimitIsWritten) {
  constexpr int levels = 999;  // below the document's own root
  std::string document = R"(<xdm version="1.0"><element name="a">)", path = "/a", expected = "<a>{", end = "}</a>";
  for (int level = 2; level <= levels; ++level) {
    document += R"(<element name="e">)";
    path += "/e";
    expected += level < levels ? R"(local:e2ec("e", ()" : R"(local:e2e("e", /table/row[1]/c)";
    end.insert(0, level < levels ? "))" : ")");
  }
  for (int level = 1; level <= levels; ++level) document += "</element>";
  make(document + "</xdm>", {{path.c_str(), "c"}});
  EXPECT_EQ(bodyOf(true), expected + end);
}

TEST_F(ElementBuilderTest, ExhaustedMemoryFails) {
  make(rowInTeam, {{"/a/region", "region", 1}, {"/a/region/team/@id", "id", 1}, {"/a/region/team/r/c", "c"}});
  const std::string expected = bodyOf(true);
  const long points = sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    bool built = false, met = false;
    out = QueryText();
    {
      AllocationFaults faults(nth, extent);
      built = build(impl()->root(), true);
      met = faults.met();
    }
    EXPECT_EQ(built, !met);
    EXPECT_EQ(met ? expected : str(out.text()), expected);
    return met;
  });
  EXPECT_GT(points, 5);
}

}  // namespace

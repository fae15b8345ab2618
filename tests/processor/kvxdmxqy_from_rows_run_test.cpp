// Runs every shape of rows-to-XML query in the real processors and compares the documents node by node.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "documents.h"
#include "from_rows_model.h"
#include "xquery.h"

namespace {

/** A query that is not valid, by the rules by which it is written: what the processors say of it. */
struct Refusal {
  std::string_view shape;
  bool groupRows;
  const char* error;
};

constexpr Refusal refusals[] = {
    // An element is passed where text nodes are asked for, since no group loop surrounds the group column.
    {"ElementWithTextAndElementsFromAGroup", false, "XPTY0004"},
    {"ElementWithTextAttributesAndElementsFromAGroup", false, "XPTY0004"},
    {"GroupColumnOfAnElementInTheRow", false, "XPTY0004"},
    {"GroupColumnOfAnElementInTheRow", true, "XPTY0004"},
    {"GroupsOnElements", false, "XPTY0004"},
    {"GroupsOnElementAndAttributesByPlace", false, "XPTY0004"},
    {"GroupsOnElementAndAttributesByLevel", false, "XPTY0004"},
    // The variable of a loop that is not there, or not any more.
    {"TwoGroupAttributesOfOneLevel", true, "XPST0008"},
    {"GroupColumnBesideTheRow", true, "XPST0008"},
    {"ElementsAroundTheRowInTheRoot", true, "XPST0008"},
    // A parenthesis too few, a comma too many, content that is opened too often or not at all.
    {"NoColumnAtTheRow", true, "XPST0003"},
    {"RootWithText", true, "XPST0003"},
    {"RowWithTwoSteps", false, "XPST0003"},
    {"RowWithTwoSteps", true, "XPST0003"},
    {"NothingInsideTheRoot", false, "XPST0003"},
    {"NothingInsideTheRoot", true, "XPST0003"},
};

const Refusal* refusalOf(const FromRowsShape& shape, bool groupRows) {
  auto found = std::find_if(std::begin(refusals), std::end(refusals), [&](const Refusal& refusal) {
    return refusal.shape == shape.name && refusal.groupRows == groupRows;
  });
  return found == std::end(refusals) ? nullptr : found;
}

class FromRowsRun : public testing::TestWithParam<FromRowsShape> {
 protected:
  void expectDocument(bool groupRows) {
    const std::string query = queryOf(GetParam(), groupRows);
    for (Processor processor : processors) {
      SCOPED_TRACE(nameOf(processor));
      const ProcessResult result = runQuery(processor, query, GetParam().rows);
      if (const Refusal* refusal = refusalOf(GetParam(), groupRows)) {
        EXPECT_NE(result.status, 0) << result.output;
        EXPECT_THAT(result.error, testing::HasSubstr(refusal->error));
      } else {
        ASSERT_EQ(result.status, 0) << result.error;
        EXPECT_EQ(treeOf(result.output), treeOf(GetParam().query(groupRows).document));
      }
    }
  }
};

TEST_P(FromRowsRun, GivesTheDocumentWithoutGrouping) { expectDocument(false); }

TEST_P(FromRowsRun, GivesTheDocumentWithGrouping) { expectDocument(true); }

INSTANTIATE_TEST_SUITE_P(Shapes, FromRowsRun, testing::ValuesIn(fromRowsShapes()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(FromRowsRefusals, AreTheQueriesWithoutADocument) {
  std::size_t withoutDocument = 0;
  for (const FromRowsShape& shape : fromRowsShapes()) {
    for (bool groupRows : {false, true}) {
      const bool refused = *shape.query(groupRows).document == '\0';
      EXPECT_EQ(refusalOf(shape, groupRows) != nullptr, refused) << shape.name;
      withoutDocument += refused;
    }
  }
  EXPECT_EQ(std::size(refusals), withoutDocument);
}

}  // namespace

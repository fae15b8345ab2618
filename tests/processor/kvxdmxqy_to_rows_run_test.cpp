// Runs every shape of XML-to-rows query in the real processors and compares the rows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "temporary.h"
#include "to_rows_model.h"

namespace {

class ToRowsRun : public testing::TestWithParam<ToRowsShape> {
 protected:
  ProcessResult run(Processor processor) {
    const ToRowsShape& shape = GetParam();
    if (!shape.collection) return runQuery(processor, shape.query, shape.document);
    TemporaryFolder folder;
    folder.write("document.xml", shape.document);
    return runQueryOnFile(processor, shape.query, "", {{"KV_BENCH", folder.path()}});
  }
};

TEST_P(ToRowsRun, GivesTheRows) {
  const ToRowsShape& shape = GetParam();
  for (Processor processor : processors) {
    ProcessResult result = run(processor);
    if (*shape.processorError) {
      EXPECT_NE(result.status, 0) << nameOf(processor);
      EXPECT_THAT(result.error, testing::HasSubstr(shape.processorError)) << nameOf(processor);
    } else {
      ASSERT_EQ(result.status, 0) << nameOf(processor) << ": " << result.error;
      EXPECT_EQ(rowsOf(result.output), shape.rows) << nameOf(processor);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, ToRowsRun, testing::ValuesIn(toRowsShapes()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace

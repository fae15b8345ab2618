// Tests the text of the XML-to-rows query.
#include <gtest/gtest.h>

#include "allocation_faults.h"
#include "kvxdmmain.h"
#include "to_rows_model.h"

namespace {

class ToRowsText : public testing::TestWithParam<ToRowsShape> {};

TEST_P(ToRowsText, IsWrittenToTheLetter) { EXPECT_EQ(queryOf(GetParam()), GetParam().query); }

INSTANTIATE_TEST_SUITE_P(Shapes, ToRowsText, testing::ValuesIn(toRowsShapes()),
                         [](const auto& info) { return std::string(info.param.name); });

KvbString ask(XDMMain* main, KvbString* error) { return main->genXQueryToColumns(true, false, true, false, error); }

TEST(ToRowsFailure, EmptyModelIs1423InTheCallersErrorOnly) {
  XDMMainPtr main(kvxdmCreateMain(0));
  KvbString error;
  EXPECT_EQ(str(ask(main.get(), &error)), "");
  EXPECT_EQ(str(error), catalogue(1423));
  EXPECT_EQ(str(static_cast<XDMMainImpl*>(main.get())->errorMessage()), "");
}

TEST(ToRowsFailure, NoSelectedColumnIs1441InTheCallersErrorOnly) {
  XDMMainPtr main = loadModel(oneRowBelowB);
  const std::string before = str(static_cast<XDMMainImpl*>(main.get())->errorMessage());
  KvbString error;
  EXPECT_EQ(str(ask(main.get(), &error)), "");
  EXPECT_EQ(str(error), catalogue(1441));
  EXPECT_EQ(str(static_cast<XDMMainImpl*>(main.get())->errorMessage()), before);
}

TEST(ToRowsFailure, NoElementThatDecidesTheRowIsReportedAfterMarking) {
  XDMMainPtr main = loadModel(oneRowBelowB);
  selectColumn(main.get(), "/a/b/@k", "k");
  KvbString error;
  EXPECT_EQ(str(ask(main.get(), &error)), "");
  EXPECT_EQ(str(error), "No element decides the row.");
  EXPECT_TRUE(static_cast<XDMMainImpl*>(main.get())->root() != nullptr);
}

TEST(ToRowsFailure, AMarkingFailureIsCopiedIntoTheCallersError) {
  XDMMainPtr main = loadModel(R"(<xdm version="1.0"><element name="a"><namespace prefix="p" uri="u1"/>
      <element name="r"><namespace prefix="p" uri="u2"/></element></element></xdm>)");
  elementAt(main.get(), "/a/r")->setDecidesRow(true);
  selectColumn(main.get(), "/a/r", "r");
  KvbString error;
  EXPECT_EQ(str(ask(main.get(), &error)), "");
  EXPECT_EQ(str(error), catalogue(1442, "p", "u1", "u2"));
  EXPECT_EQ(str(static_cast<XDMMainImpl*>(main.get())->errorMessage()), str(error));
}

TEST(ToRowsSuccess, LeavesTheCallersErrorUntouchedAndGivesTheSameTextAgain) {
  XDMMainPtr main = modelOf(toRowsShapes().front());
  KvbString error = kv("untouched");
  const std::string first = str(ask(main.get(), &error));
  EXPECT_EQ(first, str(ask(main.get(), &error)));
  EXPECT_NE(first, "");
  EXPECT_EQ(str(error), "untouched");
}

TEST(ToRowsFailure, ExhaustedMemoryGivesTheWholeTextOrNone) {
  const ToRowsShape& shape = toRowsShapes().front();
  const ToRowsArguments& arguments = shape.arguments;
  XDMMainPtr main = modelOf(shape);
  long refused = 0;
  sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    KvbString error, query;
    bool met = false;
    {
      AllocationFaults faults(nth, extent);
      query = main->genXQueryToColumns(arguments.streaming, arguments.sequenceArgument, arguments.relativeLets,
                                       arguments.keepWhitespace, &error);
      met = faults.met();
    }
    EXPECT_TRUE(str(query) == shape.query || (met && str(query).empty())) << str(query);
    refused += str(query).empty();
    return met;
  });
  EXPECT_GT(refused, 0);
}

TEST(ToRowsSuccess, AColumnXPathShorterThanTheRowsGivesTheRowItself) {
  XDMMainPtr main = loadModel(oneRowBelowB);
  elementAt(main.get(), "/a/b/r")->setDecidesRow(true);
  KvbString error;
  ASSERT_TRUE(selectColumn(main.get(), "/a/b/r/c1", "c")->setXPath(kv("/a/b"), &error));
  EXPECT_NE(str(ask(main.get(), &error)).find("<c>{local:gt($row)}</c>"), std::string::npos);
}

}  // namespace

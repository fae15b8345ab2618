// Tests kvxdmxqy_text.h: query text that grows by appends.
#include "kvxdmxqy_text.h"

#include <gtest/gtest.h>

#include "allocation_faults.h"
#include "texts.h"

namespace {

class QueryTextTest : public testing::Test {
 protected:
  void appendWithoutMemory(QueryText& query) {
    AllocationFaults faults(1, AllocationFaults::Extent::once);
    query << std::string_view(long_);
  }

  const std::string long_ = std::string(10000, 'x');
  KvbString text = kv("a");
  bool failed = false;
  QueryText query{text, failed};
};

TEST_F(QueryTextTest, AppendsLiteralsAndStrings) {
  query << "b" << kv("c") << KvbString() << std::string_view("de").substr(1);
  EXPECT_EQ(str(text), "abce");
  EXPECT_EQ(query.length(), 4U);
  EXPECT_FALSE(query.failed());
}

TEST_F(QueryTextTest, TakesBackWhatWasAppended) {
  query << "bcd";
  query.truncate(2);
  EXPECT_EQ(str(text), "ab");
}

TEST_F(QueryTextTest, FailureSticksAndLaterAppendsAreDropped) {
  appendWithoutMemory(query);
  query << "b";
  EXPECT_TRUE(query.failed());
  EXPECT_EQ(str(text), "a");
}

TEST_F(QueryTextTest, TextsCanShareOneFlag) {
  KvbString other;
  appendWithoutMemory(query);
  QueryText(other, failed) << "b";
  EXPECT_EQ(str(other), "");
}

TEST_F(QueryTextTest, FailureCanBeReported) {
  query.fail();
  EXPECT_TRUE(failed);
}

TEST_F(QueryTextTest, HeadCarriesThePrologAndWithoutStreamingTheOption) {
  KvbString head;
  QueryText headText(head, failed);
  writeQueryHead(headText, kv("\n\nPROLOG\n"), false);
  EXPECT_EQ(str(head),
            "xquery version \"1.0\";\ndeclare boundary-space preserve;\n\n\nPROLOG\n"
            "declare option ddtek:xml-streaming \"no\";\n");
}

TEST_F(QueryTextTest, HeadWithStreamingHasNoOption) {
  KvbString head;
  QueryText headText(head, failed);
  writeQueryHead(headText, KvbString(), true);
  EXPECT_EQ(str(head), "xquery version \"1.0\";\ndeclare boundary-space preserve;\n");
}

}  // namespace

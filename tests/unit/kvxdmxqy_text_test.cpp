// Tests kvxdmxqy_text.h: query text that grows by appends.
#include "kvxdmxqy_text.h"

#include <gtest/gtest.h>

#include "allocation_faults.h"
#include "texts.h"

namespace {

TEST(QueryTextTest, AppendsLiteralsAndStrings) {
  QueryText query;
  query << "a" << kv("b") << KvbString() << std::string_view("cd").substr(1);
  EXPECT_EQ(query.text(), "abd");
  EXPECT_EQ(query.length(), 3U);
  EXPECT_FALSE(query.empty());
}

TEST(QueryTextTest, TakesBackWhatWasAppended) {
  QueryText query;
  query << "abcd";
  query.truncate(2);
  EXPECT_EQ(query.text(), "ab");
}

TEST(QueryTextTest, ExhaustedMemoryIsThrownAndLeavesTheText) {
  const std::string longText(10000, 'x');
  QueryText query;
  query << "a";
  {
    AllocationFaults faults(1, AllocationFaults::Extent::once);
    EXPECT_THROW(query << std::string_view(longText), std::bad_alloc);
  }
  EXPECT_EQ(query.text(), "a");
}

TEST(JoinedTexts, AreOneString) {
  EXPECT_EQ(str(joined({"ab", "", "c"})), "abc");
  EXPECT_EQ(str(joined({})), "");
}

TEST(JoinedTexts, WithoutMemoryAreRefused) {
  AllocationFaults faults(1, AllocationFaults::Extent::once);
  EXPECT_THROW(joined({"ab", "c"}), std::bad_alloc);
}

TEST(JoinedTexts, LongerThanAStringCanBeAreRefused) {
  const std::string_view tooLong("x", std::size_t{1} << 31);  // its size alone is looked at
  EXPECT_THROW(joined({"ab", tooLong}), std::bad_alloc);
}

TEST(QueryHead, CarriesThePrologAndWithoutStreamingTheOption) {
  QueryText head;
  writeQueryHead(head, "\n\nPROLOG\n", false);
  EXPECT_EQ(head.text(),
            "xquery version \"1.0\";\ndeclare boundary-space preserve;\n\n\nPROLOG\n"
            "declare option ddtek:xml-streaming \"no\";\n");
}

TEST(QueryHead, WithStreamingHasNoOption) {
  QueryText head;
  writeQueryHead(head, "", true);
  EXPECT_EQ(head.text(), "xquery version \"1.0\";\ndeclare boundary-space preserve;\n");
}

}  // namespace

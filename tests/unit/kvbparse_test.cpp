// Tests attribute strings: kvbparse.cpp and the reader of pairs in kvbpairs.cpp.
#include <kvxbase/kvbparse.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "allocation_faults.h"

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairsOf(const KvbParse& parse) {
  Pairs pairs;
  for (int i = 0; i < parse.getAttributeCount(); ++i) {
    KvbString name, value;
    EXPECT_TRUE(parse.getAttribute(i, &name, &value));
    pairs.emplace_back(name.asCstr(), value.asCstr());
  }
  return pairs;
}

TEST(KvbParse, ReadsPairsInTheirOrder) {
  struct {
    const char* text;
    char separator;
    Pairs pairs;
  } cases[] = {
      {"", 0, {}},
      {" \t\r\n", 0, {}},
      {"", ',', {}},
      {" ", ',', {}},
      {"   ", ' ', {}},
      {"a=1", 0, {{"a", "1"}}},
      {" a=dept\tb=team\n", 0, {{"a", "dept"}, {"b", "team"}}},
      {"a = 1 b= 2 c =3", 0, {{"a", "1"}, {"b", "2"}, {"c", "3"}}},
      {"a='x y' b=\"it's\"", 0, {{"a", "x y"}, {"b", "it's"}}},
      {"a='' b=\"\"", 0, {{"a", ""}, {"b", ""}}},
      {"a=1 a=2 a=1", 0, {{"a", "1"}, {"a", "2"}, {"a", "1"}}},
      {"a=b=c", 0, {{"a", "b=c"}}},
      {"a==", 0, {{"a", "="}}},
      {"a=it's", 0, {{"a", "it's"}}},
      {"a=1,b=2", 0, {{"a", "1,b=2"}}},
      {"a='1=2 ,'", 0, {{"a", "1=2 ,"}}},
      {"a=1,b=2", ',', {{"a", "1"}, {"b", "2"}}},
      {" a = x y , b='p,q' ", ',', {{"a", "x y"}, {"b", "p,q"}}},
      {"first name=x", ';', {{"first name", "x"}}},
      {"a=1\nb=2", '\n', {{"a", "1"}, {"b", "2"}}},
      {"\xc3\xa4=\xc3\xb6", 0, {{"\xc3\xa4", "\xc3\xb6"}}},
  };
  for (const auto& each : cases) {
    KvbParse parse;
    EXPECT_TRUE(parse.parse(KvbString(each.text, true), each.separator)) << each.text;
    EXPECT_EQ(pairsOf(parse), each.pairs) << each.text;
    EXPECT_EQ(parse.getErrorMessage().length(), 0) << each.text;
  }
}

TEST(KvbParse, RefusesAFaultyTextAndSaysWhere) {
  struct {
    const char* text;
    char separator;
    const char* reason;
  } cases[] = {
      {"=1", 0, "a name is missing at position 0"},
      {"  = 1", 0, "a name is missing at position 2"},
      {"a=1 =2", 0, "a name is missing at position 4"},
      {"a", 0, "\"=\" is missing at position 1"},
      {"a b=1", 0, "\"=\" is missing at position 2"},
      {"a=1 b", 0, "\"=\" is missing at position 5"},
      {"'a'=1 b", 0, "\"=\" is missing at position 7"},
      {"a=", 0, "a value is missing at position 2"},
      {"a=  ", 0, "a value is missing at position 4"},
      {"a='x", 0, "a quote is not closed at position 2"},
      {"a=\"x' b='1'", 0, "a quote is not closed at position 2"},
      {"a='x'y", 0, "text follows a closing quote at position 5"},
      {"a='x'b=1", 0, "text follows a closing quote at position 5"},
      {"a='x''y'", 0, "text follows a closing quote at position 5"},
      {"a=,b=1", ',', "a value is missing at position 2"},
      {"a,b=1", ',', "\"=\" is missing at position 1"},
      {"a='x' y,b=1", ',', "text follows a closing quote at position 6"},
      {",a=1", ',', "a name is missing at position 0"},
      {"a=1,,b=2", ',', "a name is missing at position 4"},
      {"a=1,", ',', "a name is missing at position 4"},
      {"a=1  b=2", ' ', "a name is missing at position 4"},
  };
  for (const auto& each : cases) {
    KvbParse parse;
    EXPECT_FALSE(parse.parse(KvbString(each.text, true), each.separator)) << each.text;
    EXPECT_STREQ(parse.getErrorMessage().asCstr(), each.reason) << each.text;
    EXPECT_EQ(parse.getAttributeCount(), 0) << each.text;
  }
}

TEST(KvbParse, ANullTextHasNoPairs) {
  KvbParse parse;
  EXPECT_TRUE(parse.parse(KvbString(), 0));
  EXPECT_EQ(parse.getAttributeCount(), 0);
}

TEST(KvbParse, AParserHoldsNothingBeforeItsFirstText) {
  KvbParse parse;
  EXPECT_EQ(parse.getAttributeCount(), 0);
  EXPECT_EQ(parse.getErrorMessage().length(), 0);
}

TEST(KvbParse, AnEmptyQuotedValueIsAValue) {
  KvbParse parse;
  KvbString name, value;
  ASSERT_TRUE(parse.parse(KvbString("a=''", true), 0));
  ASSERT_TRUE(parse.getAttribute(0, &name, &value));
  EXPECT_FALSE(value.isNull());
}

TEST(KvbParse, AnIndexOutOfRangeChangesNothing) {
  KvbParse parse;
  ASSERT_TRUE(parse.parse(KvbString("a=1", true), 0));
  KvbString name("name", true), value("value", true);
  for (int index : {-1, 1, 100}) EXPECT_FALSE(parse.getAttribute(index, &name, &value));
  EXPECT_STREQ(name.asCstr(), "name");
  EXPECT_STREQ(value.asCstr(), "value");
}

TEST(KvbParse, EachParseReplacesTheOneBefore) {
  KvbParse parse;
  EXPECT_TRUE(parse.parse(KvbString("a=1 b=2", true), 0));
  EXPECT_FALSE(parse.parse(KvbString("a", true), 0));
  EXPECT_EQ(parse.getAttributeCount(), 0);
  EXPECT_TRUE(parse.parse(KvbString("c=3", true), 0));
  EXPECT_EQ(pairsOf(parse), (Pairs{{"c", "3"}}));
  EXPECT_EQ(parse.getErrorMessage().length(), 0);
}

TEST(KvbParse, ExhaustedMemoryIsAFailureWithoutPairs) {
  KvbString text("first='a longer value' second=2", true);
  long points = sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    KvbParse parse;
    AllocationFaults faults(nth, extent);
    bool parsed = parse.parse(text, 0);
    EXPECT_EQ(parsed, !faults.met());
    EXPECT_EQ(parse.getAttributeCount(), parsed ? 2 : 0);
    return faults.met();
  });
  EXPECT_GE(points, 5);
}

}  // namespace

// Tests the text type and the formatting into it: kvbstring.cpp and kvbformat.cpp.
#include <kvxbase/kvbstring.h>

#include <gtest/gtest.h>

#include <climits>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "allocation_faults.h"

namespace {

KvbString text(const char* characters) { return KvbString(characters, true); }

std::string textOf(const KvbString& string) {
  return std::string(string.asCstr(), static_cast<std::size_t>(string.length()));
}

int signOf(int number) { return (number > 0) - (number < 0); }

TEST(KvbString, ADefaultConstructedStringIsNull) {
  KvbString string;
  EXPECT_TRUE(string.isNull());
  EXPECT_EQ(string.length(), 0);
  EXPECT_STREQ(string.asCstr(), "");
}

TEST(KvbString, AnEmptyStringIsNotNull) {
  EXPECT_FALSE(text("").isNull());
  EXPECT_FALSE(KvbString("", 0u).isNull());
  EXPECT_STREQ(text("").asCstr(), "");
}

TEST(KvbString, ANullPointerMakesANullString) {
  const char* nothing = nullptr;
  EXPECT_TRUE(KvbString(nothing, true).isNull());
  KvbString string = text("old");
  string.assign(nothing);
  EXPECT_TRUE(string.isNull());
}

TEST(KvbString, NullAndEmptyCompareEqualAndOrderEqual) {
  EXPECT_EQ(KvbString().compare(text(""), true), 0);
  EXPECT_EQ(text("").compare(KvbString(), false), 0);
  EXPECT_FALSE(KvbStringLess()(KvbString(), text("")));
  EXPECT_FALSE(KvbStringLess()(text(""), KvbString()));
}

TEST(KvbString, ACopyKeepsTheNullState) {
  KvbString null, copy(null), assigned = text("x");
  assigned = null;
  EXPECT_TRUE(copy.isNull());
  EXPECT_TRUE(assigned.isNull());
}

TEST(KvbString, ACopySharesTheTextWithoutAllocating) {
  KvbString original = text("shared");
  long before = allocationsSoFar();
  KvbString copy(original), assigned;
  assigned = copy;
  EXPECT_EQ(allocationsSoFar(), before);
  EXPECT_EQ(copy.asCstr(), original.asCstr());
  EXPECT_EQ(assigned.asCstr(), original.asCstr());
}

TEST(KvbString, AChangeLeavesTheCopiesAlone) {
  KvbString original = text("abc");
  KvbString appended(original), truncated(original), replaced(original), assigned(original);
  appended.append("d", nullptr);
  truncated.truncate(1);
  replaced.replace(text("b"), text("-"), 0, -1);
  assigned.assign("new");
  EXPECT_EQ(textOf(original), "abc");
  EXPECT_EQ(textOf(appended), "abcd");
  EXPECT_EQ(textOf(truncated), "a");
  EXPECT_EQ(textOf(replaced), "a-c");
  EXPECT_EQ(textOf(assigned), "new");
}

TEST(KvbString, AStringAssignedToItselfStaysAsItIs) {
  KvbString string = text("self");
  KvbString& same = string;
  string = same;
  EXPECT_EQ(textOf(string), "self");
  string = std::move(same);
  EXPECT_EQ(textOf(string), "self");
  string.assign(string.asCstr() + 1);
  EXPECT_EQ(textOf(string), "elf");
}

TEST(KvbString, AMoveTakesTheTextAndLeavesNull) {
  KvbString from = text("moved");
  KvbString constructed(std::move(from));
  KvbString assigned = text("old");
  assigned = std::move(constructed);
  EXPECT_EQ(textOf(assigned), "moved");
  EXPECT_TRUE(from.isNull());         // NOLINT(bugprone-use-after-move): the state after a move is promised
  EXPECT_TRUE(constructed.isNull());  // NOLINT(bugprone-use-after-move)
}

TEST(KvbString, BytesOfAnyValueAreKept) {
  KvbString string("a\0b\xff", 4u);
  EXPECT_EQ(string.length(), 4);
  EXPECT_EQ(textOf(string), std::string("a\0b\xff", 4));
}

TEST(KvbString, AssigningANumberGivesItsDecimalForm) {
  KvbString string;
  for (int number : {0, 7, -1, INT_MAX, INT_MIN}) {
    string.assign(number);
    EXPECT_EQ(textOf(string), std::to_string(number));
  }
}

TEST(KvbString, AppendAddsEveryKindOfText) {
  KvbString string;
  bool failed = false;
  string.append("a", &failed);
  string.append(text("bc"), &failed);
  string.append("defg", 2u, &failed);
  EXPECT_EQ(textOf(string), "abcde");
  EXPECT_FALSE(failed);
}

TEST(KvbString, AppendingNothingChangesNothing) {
  KvbString null;
  const char* nothing = nullptr;
  null.append(nothing, nullptr);
  null.append("", nullptr);
  null.append(KvbString(), nullptr);
  EXPECT_TRUE(null.isNull());
}

TEST(KvbString, AppendOfTheStringItselfDoublesIt) {
  KvbString string = text("ab");
  for (int i = 0; i < 6; ++i) string.append(string, nullptr);
  EXPECT_EQ(string.length(), 128);
  string.append(string.asCstr() + 126, nullptr);
  EXPECT_EQ(textOf(string.right(4)), "abab");
  string.append(string.asCstr() + 1, 2u, nullptr);
  EXPECT_EQ(textOf(string.right(4)), "abba");
}

TEST(KvbString, ManyAppendsAllocateOnlyNowAndThen) {
  KvbString string;
  long before = allocationsSoFar();
  for (int i = 0; i < 100000; ++i) string.append("0123456789", nullptr);
  EXPECT_EQ(string.length(), 1000000);
  EXPECT_LT(allocationsSoFar() - before, 20);
}

TEST(KvbString, AFailedAppendSetsTheFlagAndKeepsTheText) {
  for (const char* start : {"", "abc"}) {
    KvbString string = text(start);
    bool failed = false;
    AllocationFaults faults(1, AllocationFaults::Extent::once);
    string.append("0123456789012345678901234567890123456789", &failed);
    EXPECT_TRUE(failed);
    EXPECT_EQ(textOf(string), start);
  }
}

TEST(KvbString, AnAppendThatSucceedsNeverClearsTheFlag) {
  KvbString string = text("a");
  bool failed = true;
  string.append("b", &failed);
  string.append(text("c"), &failed);
  EXPECT_TRUE(failed);
  EXPECT_EQ(textOf(string), "abc");
}

TEST(KvbString, AFailedAppendWithoutAFlagKeepsTheText) {
  KvbString string = text("abc"), shared(string);
  AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
  string.append("d", nullptr);
  string.append(text(""), nullptr);
  EXPECT_TRUE(faults.met());
  EXPECT_STREQ(string.asCstr(), "abc");
  EXPECT_STREQ(shared.asCstr(), "abc");
}

TEST(KvbString, ALengthBeyondTheLimitCountsAsExhaustedMemory) {
  KvbString string = text("abc");
  bool failed = false;
  string.append("x", static_cast<unsigned>(INT_MAX), &failed);
  EXPECT_TRUE(failed);
  EXPECT_EQ(textOf(string), "abc");
  EXPECT_THROW(KvbString("x", static_cast<unsigned>(INT_MAX) + 1), std::bad_alloc);
}

TEST(KvbString, OtherOperationsThrowOnExhaustedMemoryAndKeepTheText) {
  KvbString string = text("a b a"), shared(string), what = text("a"), with = text("a longer text than any before it");
  AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
  EXPECT_THROW(string.assign("other"), std::bad_alloc);
  EXPECT_THROW(string.assign(12), std::bad_alloc);
  EXPECT_THROW(string.replace(what, with, 0, -1), std::bad_alloc);
  EXPECT_THROW(string.truncate(2), std::bad_alloc);
  EXPECT_THROW(string.mid(1, 2), std::bad_alloc);
  EXPECT_THROW(KvbString("text", true), std::bad_alloc);
  EXPECT_STREQ(string.asCstr(), "a b a");
}

TEST(KvbString, CompareOrdersByteByByte) {
  struct {
    const char* left;
    const char* right;
    int exact;
    int folded;
  } cases[] = {{"a", "a", 0, 0},     {"a", "b", -1, -1},      {"b", "a", 1, 1},   {"a", "ab", -1, -1},
               {"ab", "a", 1, 1},    {"", "a", -1, -1},       {"A", "a", -1, 0},  {"Date", "dATE", -1, 0},
               {"a", "B", 1, -1},    {"\xc3\xa4", "z", 1, 1}, {"[", "a", -1, -1}, {"\xc4", "\xe4", -1, -1},
               {"AB", "abc", -1, -1}};
  for (const auto& each : cases) {
    EXPECT_EQ(signOf(text(each.left).compare(text(each.right), true)), each.exact) << each.left << " " << each.right;
    EXPECT_EQ(signOf(text(each.left).compare(text(each.right), false)), each.folded) << each.left << " " << each.right;
    EXPECT_EQ(signOf(text(each.left).compare(each.right, true)), each.exact) << each.left << " " << each.right;
    EXPECT_EQ(signOf(text(each.left).compare(each.right, false)), each.folded) << each.left << " " << each.right;
  }
}

TEST(KvbString, ANullPointerComparesAsEmpty) {
  const char* nothing = nullptr;
  EXPECT_EQ(KvbString().compare(nothing, true), 0);
  EXPECT_GT(text("a").compare(nothing, false), 0);
}

TEST(KvbString, FindGivesTheFirstPlaceAtOrAfterTheStart) {
  struct {
    const char* in;
    const char* what;
    int from;
    int found;
  } cases[] = {{"abcabc", "c", 0, 2},  {"abcabc", "c", 3, 5}, {"abcabc", "abc", 1, 3}, {"abc", "x", 0, -1},
               {"abc", "abcd", 0, -1}, {"abc", "c", 3, -1},   {"abc", "c", 4, -1},     {"abc", "", 1, 1},
               {"abc", "", 3, 3},      {"abc", "", 4, -1},    {"", "a", 0, -1},        {"abc", "a", -5, 0}};
  for (const auto& each : cases) {
    EXPECT_EQ(text(each.in).find(text(each.what), each.from), each.found) << each.in << " " << each.what;
  }
}

TEST(KvbString, RfindGivesTheLastPlace) {
  EXPECT_EQ(text("/a/b/c").rfind(text("/")), 4);
  EXPECT_EQ(text("abab").rfind(text("ab")), 2);
  EXPECT_EQ(text("abc").rfind(text("x")), -1);
  EXPECT_EQ(KvbString().rfind(text("x")), -1);
}

TEST(KvbString, MidIsClippedToTheEnd) {
  struct {
    unsigned start;
    int count;
    const char* result;
  } cases[] = {{0, 3, "abc"}, {1, 2, "bc"}, {2, 10, "c"}, {3, 1, ""},    {9, 1, ""},
               {1, -1, "bc"}, {0, 0, ""},   {9, -1, ""},  {0, -1, "abc"}};
  for (const auto& each : cases) {
    EXPECT_EQ(textOf(text("abc").mid(each.start, each.count)), each.result) << each.start << " " << each.count;
  }
}

TEST(KvbString, RightGivesTheLastCharacters) {
  EXPECT_EQ(textOf(text("abc").right(2)), "bc");
  EXPECT_EQ(textOf(text("abc").right(0)), "");
  EXPECT_EQ(textOf(text("abc").right(-1)), "");
  EXPECT_EQ(textOf(text("abc").right(4)), "abc");
}

TEST(KvbString, PartsOfANullStringAreEmpty) {
  EXPECT_EQ(textOf(KvbString().mid(0, 3)), "");
  EXPECT_EQ(textOf(KvbString().right(3)), "");
}

TEST(KvbString, ReplaceChangesTheCountedOccurrences) {
  struct {
    const char* in;
    const char* what;
    const char* with;
    unsigned from;
    int count;
    const char* result;
  } cases[] = {{"a-b-c", "-", "+", 0, -1, "a+b+c"},
               {"a-b-c", "-", "+", 0, 1, "a+b-c"},
               {"a-b-c", "-", "+", 2, -1, "a-b+c"},
               {"a-b-c", "-", "", 0, -1, "abc"},
               {"aaa", "a", "aa", 0, -1, "aaaaaa"},
               {"aaa", "aa", "b", 0, -1, "ba"},
               {"abc", "", "x", 0, -1, "abc"},
               {"abc", "b", "x", 0, 0, "abc"},
               {"abc", "a", "x", 9, -1, "abc"},
               {"a", "a", "", 0, -1, ""},
               {"say \"so\"", "\"", "\"\"", 0, -1, "say \"\"so\"\""}};
  for (const auto& each : cases) {
    KvbString string = text(each.in);
    string.replace(text(each.what), text(each.with), each.from, each.count);
    EXPECT_EQ(textOf(string), each.result) << each.in;
    EXPECT_FALSE(string.isNull());
  }
}

TEST(KvbString, TrimRemovesWhiteSpaceAtTheChosenEnds) {
  struct {
    bool left;
    bool right;
    const char* result;
  } cases[] = {{true, true, "a \t b"},
               {true, false, "a \t b\f\n "},
               {false, true, " \r\va \t b"},
               {false, false, " \r\va \t b\f\n "}};
  for (const auto& each : cases) {
    KvbString string = text(" \r\va \t b\f\n ");
    string.trim(each.left, each.right);
    EXPECT_EQ(textOf(string), each.result);
  }
}

TEST(KvbString, TrimOfBlanksGivesAnEmptyTextAndLeavesNullAlone) {
  KvbString blanks = text(" \n"), null;
  blanks.trim(true, true);
  null.trim(true, true);
  EXPECT_EQ(blanks.length(), 0);
  EXPECT_FALSE(blanks.isNull());
  EXPECT_TRUE(null.isNull());
}

TEST(KvbString, TruncateKeepsTheFirstCharacters) {
  KvbString string = text("abc"), null;
  string.truncate(9);
  EXPECT_EQ(textOf(string), "abc");
  string.truncate(2);
  EXPECT_EQ(textOf(string), "ab");
  string.truncate(0);
  EXPECT_EQ(textOf(string), "");
  EXPECT_FALSE(string.isNull());
  null.truncate(0);
  EXPECT_TRUE(null.isNull());
}

TEST(KvbString, AsIntReadsDecimalNumbersOf32Bits) {
  struct {
    const char* in;
    int value;
  } cases[] = {{"0", 0},
               {"12", 12},
               {"-12", -12},
               {"+12", 12},
               {" 12\n", 12},
               {"0012", 12},
               {"2147483647", INT_MAX},
               {"-2147483648", INT_MIN}};
  for (const auto& each : cases) {
    bool failed = false;
    EXPECT_EQ(text(each.in).asInt(&failed), each.value) << each.in;
    EXPECT_FALSE(failed) << each.in;
  }
}

TEST(KvbString, AsIntRefusesEverythingElse) {
  for (const char* in : {"", " ", "x", "12abc", "1 2", "+-1", "-+1", "--1", "+", "-", "- 1", "0x10", "1.0",
                         "2147483648", "-2147483649", "99999999999999999999"}) {
    bool failed = false;
    EXPECT_EQ(text(in).asInt(&failed), 0) << in;
    EXPECT_TRUE(failed) << in;
    EXPECT_EQ(text(in).asInt(nullptr), 0) << in;
  }
}

TEST(KvbString, AsIntLeavesTheFlagOnSuccess) {
  bool failed = true;
  EXPECT_EQ(text("5").asInt(&failed), 5);
  EXPECT_TRUE(failed);
}

TEST(KvbString, SetNullMakesTheStringNull) {
  KvbString string = text("abc"), shared(string);
  string.setNull();
  EXPECT_TRUE(string.isNull());
  EXPECT_EQ(textOf(shared), "abc");
}

TEST(KvbString, CopiesInManyThreadsShareOneTextSafely) {
  KvbString original = text("shared by all threads");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([copy = original]() mutable {
      for (int i = 0; i < 10000; ++i) {
        KvbString another(copy);
        another.append("!", nullptr);
        if (another.length() != copy.length() + 1) ADD_FAILURE();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(textOf(original), "shared by all threads");
}

TEST(KvbStringFormat, FormatsAsPrintfDoes) {
  EXPECT_EQ(textOf(kvbStringFormat("%s is %d", "x", -5)), "x is -5");
  EXPECT_EQ(textOf(kvbStringFormat("plain")), "plain");
}

TEST(KvbStringFormat, AnEmptyResultIsNotNull) {
  KvbString string = kvbStringFormat("%s", "");
  EXPECT_EQ(string.length(), 0);
  EXPECT_FALSE(string.isNull());
}

TEST(KvbStringFormat, ATextThatCannotBeFormattedGivesNull) {
  EXPECT_TRUE(kvbStringFormat("%ls", L"\u00e4 has no place in the C locale").isNull());
}

TEST(KvbStringFormat, ResultsOfAnyLengthAreWhole) {
  for (std::size_t length : {254u, 255u, 256u, 257u, 100000u}) {
    std::string value(length, 'x');
    EXPECT_EQ(textOf(kvbStringFormat("%s.", value.c_str())), value + ".");
  }
}

TEST(KvbStringFormat, ExhaustedMemoryGivesNull) {
  std::string value(1000, 'x');
  for (long nth : {1, 2}) {
    AllocationFaults faults(nth, AllocationFaults::Extent::once);
    EXPECT_TRUE(kvbStringFormat("%s", value.c_str()).isNull());
  }
  AllocationFaults faults(1, AllocationFaults::Extent::once);
  EXPECT_TRUE(kvbStringFormat("%d", 5).isNull());
}

}  // namespace

// Tests the variant value: kvbdatavar.cpp.
#include <kvxbase/kvbdatavar.h>

#include <gtest/gtest.h>

namespace {

TEST(KvbDatavar, GivesTheNumberThatTheTextSpells) {
  KvbDatavar value;
  bool failed = false;
  value.assign(KvbString(" -12 ", true));
  EXPECT_EQ(value.asInt(&failed), -12);
  EXPECT_FALSE(failed);
}

TEST(KvbDatavar, FailsForATextThatIsNoNumber) {
  for (const char* text : {"", "x", "1x", "2147483648"}) {
    KvbDatavar value;
    bool failed = false;
    value.assign(KvbString(text, true));
    EXPECT_EQ(value.asInt(&failed), 0) << text;
    EXPECT_TRUE(failed) << text;
  }
}

TEST(KvbDatavar, FailsBeforeAnyAssignment) {
  bool failed = false;
  EXPECT_EQ(KvbDatavar().asInt(&failed), 0);
  EXPECT_TRUE(failed);
}

TEST(KvbDatavar, TheLastAssignmentCounts) {
  KvbDatavar value;
  value.assign(KvbString("1", true));
  value.assign(KvbString("2", true));
  EXPECT_EQ(value.asInt(nullptr), 2);
}

}  // namespace

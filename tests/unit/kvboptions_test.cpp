// Tests configuration options: kvboptions.cpp.
#include <kvxbase/kvboptions.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "allocation_faults.h"

namespace {

KvbString text(const char* characters) { return KvbString(characters, true); }

const KvbConfigOptions* options() { return kvbGetConfigOptions(KvbString()); }

/** The value of an option; nothing when it is not set or there are no options at all. */
std::optional<std::string> valueOf(const char* name) {
  KvbString value;
  if (!options() || !options()->lookup(text(name), &value, 0)) return std::nullopt;
  return value.asCstr();
}

class Options : public testing::Test {
 protected:
  Options() { forget(); }
  ~Options() override { forget(); }

  static void setEnvironment(const char* value) { setenv("KVX_OPTIONS", value, 1); }

 private:
  static void forget() {
    unsetenv("KVX_OPTIONS");
    kvbClearConfigOptions();
  }
};

TEST_F(Options, ThereIsNoObjectWithoutOptions) {
  EXPECT_EQ(options(), nullptr);
  setEnvironment(" ");
  EXPECT_EQ(options(), nullptr);
}

TEST_F(Options, TheEnvironmentHoldsNamesAndValues) {
  setEnvironment("  Bench size=12 text='a b'\tquoted=\"c\"  empty='' last=x=y");
  EXPECT_EQ(valueOf("Bench"), "");
  EXPECT_EQ(valueOf("size"), "12");
  EXPECT_EQ(valueOf("text"), "a b");
  EXPECT_EQ(valueOf("quoted"), "c");
  EXPECT_EQ(valueOf("empty"), "");
  EXPECT_EQ(valueOf("last"), "x=y");
  EXPECT_EQ(valueOf("other"), std::nullopt);
}

TEST_F(Options, NamesAreCaseSensitive) {
  setEnvironment("Bench");
  EXPECT_EQ(valueOf("bench"), std::nullopt);
}

TEST_F(Options, AValueMayBeLeftUnread) {
  setEnvironment("Bench");
  EXPECT_TRUE(options()->lookup(text("Bench"), nullptr, 0));
}

TEST_F(Options, ALookUpThatFindsNothingLeavesTheValue) {
  setEnvironment("Bench");
  KvbString value = text("old");
  EXPECT_FALSE(options()->lookup(text("other"), &value, 0));
  EXPECT_STREQ(value.asCstr(), "old");
}

TEST_F(Options, TheFirstOfSeveralValuesCounts) {
  setEnvironment("a=1 a=2");
  EXPECT_EQ(valueOf("a"), "1");
}

TEST_F(Options, WhatStandsBeforeAFaultCounts) {
  setEnvironment("a=1 b='open c=3");
  EXPECT_EQ(valueOf("a"), "1");
  EXPECT_EQ(valueOf("b"), std::nullopt);
  EXPECT_EQ(valueOf("c"), std::nullopt);
}

TEST_F(Options, TheHostSetsOptions) {
  kvbSetConfigOption(text("Bench"), text("on"));
  EXPECT_EQ(valueOf("Bench"), "on");
  kvbSetConfigOption(text("Bench"), text("off"));
  EXPECT_EQ(valueOf("Bench"), "off");
}

TEST_F(Options, AnOptionOfTheHostHidesTheEnvironment) {
  setEnvironment("a=1 b=2");
  kvbSetConfigOption(text("a"), text("host"));
  EXPECT_EQ(valueOf("a"), "host");
  EXPECT_EQ(valueOf("b"), "2");
}

TEST_F(Options, ClearingTakesBackOnlyWhatTheHostSet) {
  kvbSetConfigOption(text("a"), text("host"));
  kvbClearConfigOptions();
  EXPECT_EQ(options(), nullptr);
  setEnvironment("a=1");
  EXPECT_EQ(valueOf("a"), "1");
}

TEST_F(Options, TheEnvironmentIsReadAtEachLookUp) {
  setEnvironment("a=1");
  EXPECT_EQ(valueOf("a"), "1");
  setEnvironment("a=2");
  EXPECT_EQ(valueOf("a"), "2");
}

TEST_F(Options, AnOptionThatCannotBeStoredIsNotSet) {
  KvbString name = text("a"), value = text("1");
  {
    AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
    EXPECT_THROW(kvbSetConfigOption(name, value), std::bad_alloc);
  }
  EXPECT_EQ(options(), nullptr);
}

TEST_F(Options, EightThreadsUseThemAtOnce) {
  setEnvironment("environment=1");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([thread] {
      KvbString name = text("option");
      name.append(std::to_string(thread).c_str(), nullptr);
      for (int i = 0; i < 500; ++i) {
        kvbSetConfigOption(name, name);
        EXPECT_EQ(valueOf(name.asCstr()), name.asCstr());
        EXPECT_EQ(valueOf("environment"), "1");
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace

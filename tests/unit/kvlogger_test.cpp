// Tests loggers: kvlogger.cpp.
#include <kvxlog/kvlogger.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "allocation_faults.h"

namespace {

struct Recorded {
  std::string category;
  int level;
  std::string sourceUnit;
  int line;
  std::string text;
  bool operator==(const Recorded&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Recorded& event) {
  return out << event.category << " " << event.level << " " << event.sourceUnit << ":" << event.line << " "
             << event.text;
}

void record(const KvLogEvent& event, void* context) {
  static_cast<std::vector<Recorded>*>(context)->push_back(
      {event.category, event.level, event.sourceUnit, event.line, event.text});
}

class Logger : public testing::Test {
 protected:
  Logger() { unsetenv("KVX_LOG"); }
  ~Logger() override {
    unsetenv("KVX_LOG");
    kvlogSetSink(nullptr, nullptr, 0);
  }

  /** What goes to standard error while one event of each of the levels 1 to 5 is logged. */
  std::string printed() {
    testing::internal::CaptureStderr();
    for (int level = 1; level <= 5; ++level) logger_->logEvent(level, "unit", 7, "event %d", level);
    return testing::internal::GetCapturedStderr();
  }

  std::string printedWithEnvironment(const char* level) {
    setenv("KVX_LOG", level, 1);
    kvlogSetSink(nullptr, nullptr, 0);
    return printed();
  }

  KvLogger_* logger_ = kvlogGetLogger("KV.TEST");
  std::vector<Recorded> events_;
};

TEST_F(Logger, ACategoryHasOneLogger) {
  std::string sameName = "KV.TEST";
  EXPECT_NE(logger_, nullptr);
  EXPECT_EQ(kvlogGetLogger(sameName.c_str()), logger_);
  EXPECT_NE(kvlogGetLogger("KV.OTHER"), logger_);
}

TEST_F(Logger, ANullCategoryIsTheEmptyOne) { EXPECT_EQ(kvlogGetLogger(nullptr), kvlogGetLogger("")); }

TEST_F(Logger, IsSilentByDefault) { EXPECT_EQ(printed(), ""); }

TEST_F(Logger, TheSinkReceivesFormattedTexts) {
  kvlogSetSink(record, &events_, 0);
  logger_->logEvent(2, "kvxdm", 12, "Loaded '%s' in %d steps.", "a.map", 3);
  EXPECT_EQ(events_, (std::vector<Recorded>{{"KV.TEST", 2, "kvxdm", 12, "Loaded 'a.map' in 3 steps."}}));
}

TEST_F(Logger, TheSinkReceivesCatalogueMessages) {
  kvlogSetSink(record, &events_, 0);
  logger_->logEvent(5, "kvxdm", 40, 1427, "xdm", static_cast<const char*>(nullptr));
  EXPECT_EQ(events_, (std::vector<Recorded>{
                         {"KV.TEST", 5, "kvxdm", 40,
                          "XDM1427: There is more than one element inside \"xdm\". Leave only one of them in the XDM "
                          "document."}}));
}

TEST_F(Logger, OnlyEnabledLevelsReachTheSink) {
  kvlogSetSink(record, &events_, 3);
  for (int level = 1; level <= 5; ++level) logger_->logEvent(level, "unit", level, "text");
  ASSERT_EQ(events_.size(), 3u);
  EXPECT_EQ(events_.front().level, 3);
}

TEST_F(Logger, AnotherSinkReplacesTheOneBefore) {
  std::vector<Recorded> others;
  kvlogSetSink(record, &events_, 0);
  kvlogSetSink(record, &others, 0);
  logger_->logEvent(2, "unit", 1, "text");
  EXPECT_TRUE(events_.empty());
  EXPECT_EQ(others.size(), 1u);
}

TEST_F(Logger, TheEnvironmentPrintsALevelAndThoseAbove) {
  EXPECT_EQ(printedWithEnvironment("4"), "KV.TEST [4] unit:7: event 4\nKV.TEST [5] unit:7: event 5\n");
}

TEST_F(Logger, AnEnvironmentThatIsNoNumberIsSilent) {
  for (const char* level : {"", "all", "4x"}) EXPECT_EQ(printedWithEnvironment(level), "") << level;
}

TEST_F(Logger, ASinkTakesThePlaceOfTheEnvironment) {
  setenv("KVX_LOG", "0", 1);
  kvlogSetSink(record, &events_, 5);
  EXPECT_EQ(printed(), "");
  EXPECT_EQ(events_.size(), 1u);
}

TEST_F(Logger, AnEventIsPrintedOnOneLine) {
  setenv("KVX_LOG", "5", 1);
  kvlogSetSink(nullptr, nullptr, 0);
  testing::internal::CaptureStderr();
  logger_->logEvent(5, "unit", 1, "two\nlines\r\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "KV.TEST [5] unit:1: two lines  \n");
}

__attribute__((no_sanitize("undefined"))) void logOn(KvLogger_* logger) {
  logger->logEvent(5, "unit", 1, "text %s", "more");
  logger->logEvent(5, "unit", 1, 1423, static_cast<const char*>(nullptr));
}

TEST_F(Logger, ANullLoggerDoesNothing) {
  kvlogSetSink(record, &events_, 0);
  KvLogger_* volatile none = nullptr;  // the compiler would see through a plain null
  logOn(none);
  EXPECT_TRUE(events_.empty());
  logOn(logger_);
  EXPECT_EQ(events_.size(), 2u);
}

TEST_F(Logger, ExhaustedMemoryGivesNoLogger) {
  for (long nth : {1, 2}) {
    AllocationFaults faults(nth, AllocationFaults::Extent::once);
    EXPECT_EQ(kvlogGetLogger("KV.EXHAUSTED"), nullptr);
  }
  EXPECT_NE(kvlogGetLogger("KV.EXHAUSTED"), nullptr);
}

TEST_F(Logger, ExhaustedMemoryDropsTheEvent) {
  kvlogSetSink(record, &events_, 0);
  {
    AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
    logger_->logEvent(5, "unit", 1, "text");
    logger_->logEvent(5, "unit", 1, 1423, static_cast<const char*>(nullptr));
  }
  EXPECT_TRUE(events_.empty());
}

TEST_F(Logger, AnEventThatCannotBePrintedIsDropped) {
  setenv("KVX_LOG", "5", 1);
  kvlogSetSink(nullptr, nullptr, 0);
  testing::internal::CaptureStderr();
  {
    AllocationFaults faults(2, AllocationFaults::Extent::fromThenOn);
    logger_->logEvent(5, "unit", 1, "a text that is long enough to need memory of its own");
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Logger, EightThreadsAskForANewCategoryAtOnce) {
  std::atomic<int> waiting = 8;
  std::vector<KvLogger_*> found(8);
  std::vector<std::thread> threads;
  for (KvLogger_*& logger : found) {
    threads.emplace_back([&logger, &waiting] {
      for (--waiting; waiting > 0;) std::this_thread::yield();
      logger = kvlogGetLogger("KV.THREADS");
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(found, std::vector<KvLogger_*>(8, kvlogGetLogger("KV.THREADS")));
}

TEST_F(Logger, EventsOfEightThreadsArriveOneAtATime) {
  kvlogSetSink(record, &events_, 0);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([this] {
      for (int i = 0; i < 500; ++i) logger_->logEvent(2, "unit", i, "text %d", i);
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(events_.size(), 4000u);
}

TEST_F(Logger, TheSinkMayChangeWhileOthersLog) {
  std::atomic<bool> done = false;
  std::thread other([&] {
    while (!done) logger_->logEvent(2, "unit", 1, "text");
  });
  for (int i = 0; i < 500; ++i) {
    std::vector<Recorded> shortLived;
    kvlogSetSink(record, &shortLived, 0);
    kvlogSetSink(nullptr, nullptr, 0);
  }
  done = true;
  other.join();
  EXPECT_TRUE(events_.empty());
}

}  // namespace

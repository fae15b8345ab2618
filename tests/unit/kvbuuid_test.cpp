// Tests unique identifiers: kvbuuid.cpp.
#include <kvxbase/kvbuuid.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

TEST(KvbUUID, HasTheFormOfARandomUuidInLowerCase) {
  for (int i = 0; i < 100; ++i) {
    EXPECT_THAT(kvbGetUUID().asCstr(),
                testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
  }
}

TEST(KvbUUID, ThousandsMadeInEightThreadsAllDiffer) {
  std::set<std::string> seen;
  std::mutex guard;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&] {
      for (int i = 0; i < 1000; ++i) {
        KvbString uuid = kvbGetUUID();
        std::lock_guard<std::mutex> lock(guard);
        seen.insert(uuid.asCstr());
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(seen.size(), 8000u);
}

}  // namespace

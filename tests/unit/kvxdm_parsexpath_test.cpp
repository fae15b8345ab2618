// Tests XDMMainImpl::parseXPath: absolute XPaths cut into their steps.
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "model.h"

namespace {

/** The number of strings in an array made with new[], which the ABI keeps right in front of it. */
__attribute__((no_sanitize("address"))) std::size_t capacityOf(const KvbString* steps) {
  return reinterpret_cast<const std::size_t*>(steps)[-1];
}

struct Case {
  const char* xpath;
  std::vector<std::string> steps;
  std::size_t capacity;
};

const Case cases[] = {
    {"/a/b", {"a", "b"}, 2},
    {"/a", {"a"}, 1},
    {"/a/b/@c", {"a", "b", "@c"}, 3},
    {"/a/", {"a"}, 2},
    {"/a//b", {"a", "", "b"}, 3},
    {"/a//", {"a", ""}, 3},
    {"//a", {"", "a"}, 2},
    {"//", {""}, 2},
    {"a/b", {"", "b"}, 2},
    {"ab/c", {"b", "c"}, 2},
    {"/p:a[1]/q:b", {"p:a[1]", "q:b"}, 2},
    {"", {}, 1},
    {"/", {}, 1},
    {"a", {}, 1},
};

TEST(ParseXPath, CutsAtEverySlashAfterTheFirstCharacter) {
  XDMMainImpl main(0);
  for (const Case& sample : cases) {
    int count = -1;
    std::unique_ptr<KvbString[]> steps(main.parseXPath(kv(sample.xpath), &count));
    ASSERT_NE(steps, nullptr) << sample.xpath;
    std::vector<std::string> found;
    for (int i = 0; i < count; ++i) found.push_back(str(steps[i]));
    EXPECT_EQ(found, sample.steps) << sample.xpath;
  }
}

TEST(ParseXPath, MakesRoomForAStepAfterEverySlash) {
  XDMMainImpl main(0);
  for (const Case& sample : cases) {
    int count = 0;
    std::unique_ptr<KvbString[]> steps(main.parseXPath(kv(sample.xpath), &count));
    ASSERT_EQ(capacityOf(steps.get()), sample.capacity) << sample.xpath;
    for (auto i = static_cast<std::size_t>(count); i < sample.capacity; ++i) EXPECT_EQ(steps[i].length(), 0);
  }
}

TEST(ParseXPath, OfANullTextHasNoSteps) {
  XDMMainImpl main(0);
  int count = -1;
  std::unique_ptr<KvbString[]> steps(main.parseXPath(KvbString(), &count));
  EXPECT_NE(steps, nullptr);
  EXPECT_EQ(count, 0);
}

}  // namespace

// Holds the tree, which finds nodes by indexes and keeps answers, against a plain one that walks its lists and
// recomputes: the same operations on both, chosen at random from fixed seeds, must give the same results.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "both_trees.h"

namespace {

constexpr int operationsPerSeed = 20000;

class IndexedTree : public ::testing::TestWithParam<unsigned> {};

TEST_P(IndexedTree, GivesTheAnswersOfAPlainOne) {
  std::mt19937 random(GetParam());
  BothTrees trees([&](int below) { return std::uniform_int_distribution<int>(0, below - 1)(random); });
  for (int i = 1; i <= operationsPerSeed && !HasFailure(); ++i) {
    SCOPED_TRACE("operation " + std::to_string(i));
    trees.operate();
    if (i % 1000 == 0) trees.compareEverything();
  }
  EXPECT_GT(trees.longestChildList(), 10u * NodeIndex<XDMElemImpl>::threshold);
}

INSTANTIATE_TEST_SUITE_P(Seeds, IndexedTree, ::testing::Range(1u, 8u));

}  // namespace

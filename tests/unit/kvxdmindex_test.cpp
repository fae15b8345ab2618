// Holds the tree, which finds nodes by indexes and keeps answers, against a plain one that walks its lists and
// recomputes: the same operations on both, chosen at random from fixed seeds, must give the same results.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "allocation_faults.h"
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

struct NamedNode {
  std::string name;
  NodeKey key() const noexcept { return {.localName = name, .qualifier = {}}; }
};

std::vector<NamedNode> numberedNodes(int count) {
  std::vector<NamedNode> nodes;
  for (int i = 0; i < count; ++i) nodes.push_back({std::to_string(i)});
  return nodes;
}

TEST(Index, FindsAChildByEveryColonOfItsQualifiedName) {
  Model model;
  for (int i = 0; i < NodeIndex<XDMElemImpl>::threshold; ++i) addChild(model.root, std::to_string(i).c_str());
  bool failed = false;
  for (auto [prefix, name, qualified] : {std::tuple("p", ":n", "p::n"), {"q:", "n", "q::n"}}) {
    XDMElemImpl* child = addChild(model.root, name);
    child->setNamespace(model.root->createNamespace(kv(prefix), kv("u")));
    EXPECT_EQ(model.root->findChild(kv(qualified), &failed), child) << qualified;
  }
  EXPECT_EQ(model.root->findChild(kv("::n"), &failed), nullptr);
}

TEST(Index, FindsTheFirstNodeOfEachKeyAfterGrowing) {
  std::vector<NamedNode> nodes = numberedNodes(1000);
  std::vector<NamedNode> namesakes = nodes;
  NodeIndex<NamedNode> index;
  ASSERT_TRUE(index.create());
  for (NamedNode& node : nodes) index.addLast(&node);
  for (NamedNode& node : namesakes) index.addLast(&node);
  for (NamedNode& node : nodes) EXPECT_EQ(index.find(node.key()), &node);
  EXPECT_EQ(index.find({.localName = "1000", .qualifier = {}}), nullptr);
}

TEST(Index, IsDroppedWhenThereIsNoMemoryToGrow) {
  std::vector<NamedNode> nodes = numberedNodes(1000);
  NodeIndex<NamedNode> index;
  ASSERT_TRUE(index.create());
  const AllocationFaults faults(1, AllocationFaults::Extent::once);
  for (auto node = nodes.begin(); node != nodes.end() && index.exists(); ++node) index.addLast(&*node);
  EXPECT_TRUE(faults.met());
  EXPECT_FALSE(index.exists());
}

TEST(Index, IsNotMadeWithoutMemory) {
  const auto attempt = [](long nth, AllocationFaults::Extent extent) {
    NodeIndex<NamedNode> index;
    const AllocationFaults faults(nth, extent);
    const bool made = index.create();
    EXPECT_NE(made, faults.met());
    EXPECT_EQ(made, index.exists());
    return faults.met();
  };
  EXPECT_GT(sweepAllocationFaults(attempt), 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, IndexedTree, ::testing::Range(1u, 8u));

}  // namespace

// Work grows with the size of what it looks at and no faster: ten times the items ask for at most 10^1.15 times the
// allocations. Counts do not depend on the machine; times are what bench/ is for.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "../../bench/workloads.h"
#include "allocation_faults.h"
#include "host_model.h"
#include "temporary.h"

namespace {

using Work = std::function<void()>;
using Make = std::function<Work(long size)>;

constexpr double mostGrowth = 1.15;
constexpr long few = 500;
constexpr long deepest = 999;  // levels of a model, the document's own element being the thousandth

long allocationsOf(const Work& work) {
  const long before = allocationsSoFar();
  work();
  return allocationsSoFar() - before;
}

/** The power with which allocations grow from `size` / 10 to `size`. What is made on first use does not count. */
double growthUpTo(long size, const Make& make) {
  make(size)();
  const long small = allocationsOf(make(size / 10));
  const long large = allocationsOf(make(size));
  return std::log(static_cast<double>(large) / static_cast<double>(small)) /
         std::log(static_cast<double>(size) / static_cast<double>(size / 10));
}

Work loading(const Document& document) {
  return [text = document.text] { loadModel(text); };
}

Work saving(const Document& document) {
  std::shared_ptr<XDMMain> model = loadModel(document.text);
  return [model] {
    KvbString text, error;
    ASSERT_TRUE(model->saveToXML(&text, &error)) << str(error);
  };
}

std::shared_ptr<XDMMain> importText(const std::string& map, const std::string& groupBy = "") {
  TemporaryFolder folder;
  XDMMainPtr model(kvxdmCreateMain(0));
  KvbString error;
  if (!model->createFromXMLMap(kv(folder.write("map.xml", map)), KvbString(), kv(groupBy), 0, &error)) {
    throw std::runtime_error(str(error));
  }
  return model;
}

Work importing(const std::string& map) {
  return [map] { importText(map); };
}

Work writingToRows(const std::shared_ptr<XDMMain>& model) {
  return [model] {
    KvbString error;
    ASSERT_GT(model->genXQueryToColumns(true, false, true, false, &error).length(), 0) << str(error);
  };
}

Work writingFromRows(const std::shared_ptr<XDMMain>& model, bool groupRows) {
  return [model, groupRows] {
    KvbString error;
    ASSERT_GT(model->genXQueryFromColumns(true, groupRows, &error).length(), 0) << str(error);
  };
}

Work selecting(const Document& document) {
  std::shared_ptr<XDMMain> model = loadModel(document.text);
  return [model] {
    for (XDMNode* node = model->getRootNode()->getChild(); node; node = node->getNextSibling()) {
      ASSERT_TRUE(node->selectAsColumn(KvbString(), false));
    }
  };
}

struct Case {
  const char* name;
  long size;
  Make make;
};

std::string plainWide(long n) { return wideMap(n, PathSyntax::plain); }
std::string plainNested(long n) { return nestedMap(n, PathSyntax::plain); }

const Case cases[] = {
    {"LoadingManyLevels", 10 * few, [](long n) { return loading(bushyDocument(n)); }},
    {"LoadingManyChildren", 10 * few, [](long n) { return loading(wideDocument(n)); }},
    {"LoadingTheDeepestDocument", deepest, [](long n) { return loading(deepDocument(n)); }},
    {"SavingManyLevels", 10 * few, [](long n) { return saving(bushyDocument(n)); }},
    {"SavingManyChildren", 10 * few, [](long n) { return saving(wideDocument(n)); }},
    {"SavingTheDeepestDocument", deepest, [](long n) { return saving(deepDocument(n)); }},
    {"ImportingColumnsSideBySide", 10 * few, [](long n) { return importing(plainWide(n)); }},
    {"ImportingNestedColumns", 10 * few, [](long n) { return importing(plainNested(n)); }},
    {"ImportingExtendedPaths", 10 * few, [](long n) { return importing(nestedMap(n, PathSyntax::extended)); }},
    {"ImportingTheDeepestPath", deepest, [](long n) { return importing(deepMap(n)); }},
    {"SelectingWithoutNames", 10 * few, [](long n) { return selecting(wideDocument(n)); }},
    {"ToRowsInsideTheRow", 10 * few, [](long n) { return writingToRows(importText(plainWide(n))); }},
    {"ToRowsOutsideTheRow", 10 * few, [](long n) { return writingToRows(importText(plainNested(n))); }},
    {"ToRowsOfTheDeepestPath", deepest, [](long n) { return writingToRows(importText(deepMap(n))); }},
    {"FromRowsInsideTheRow", 10 * few, [](long n) { return writingFromRows(importText(plainWide(n)), false); }},
    {"FromRowsOutsideTheRow", 10 * few, [](long n) { return writingFromRows(importText(plainNested(n)), false); }},
    {"FromRowsOfTheDeepestPath", deepest, [](long n) { return writingFromRows(importText(deepMap(n)), false); }},
    {"FromRowsInGroupLoops", 10 * few,
     [](long n) { return writingFromRows(importText(groupedMap(n), "a=g1 b=g2"), true); }},
};

class Growth : public testing::TestWithParam<Case> {};

TEST_P(Growth, IsLinear) { EXPECT_LE(growthUpTo(GetParam().size, GetParam().make), mostGrowth); }

INSTANTIATE_TEST_SUITE_P(All, Growth, testing::ValuesIn(cases), [](const auto& test) { return test.param.name; });

TEST(GrowthOfWalking, NeedsNoAllocation) {
  const XDMMainPtr model = loadModel(wideDocument(few).text);
  const auto walk = [&] {
    for (XDMNode* node = model->getRootNode()->getChild(); node; node = node->getNextSibling()) {
      ASSERT_GT(node->getXPath().length() + node->getLocalName().length(), 0);
    }
  };
  EXPECT_EQ(allocationsOf(walk), 0);
}

}  // namespace

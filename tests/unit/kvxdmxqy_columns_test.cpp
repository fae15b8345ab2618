// Tests kvxdmxqy_columns.cpp: the table of the columns by their XPaths.
#include "kvxdmxqy_columns.h"

#include <gtest/gtest.h>

#include "allocation_faults.h"
#include "model.h"

namespace {

class ColumnsByXPathTest : public testing::Test {
 protected:
  ~ColumnsByXPathTest() override {
    while (list.getCount() > 0) delete static_cast<XDMColumnImpl*>(list.removeItem(0));
  }

  /** A column at the end of the list, with a node of its own. */
  XDMColumnImpl* column(const std::string& xpath) {
    XDMElemImpl* node = addChild(model.root, std::to_string(list.getCount()).c_str());
    node->setXPath(kv(xpath));
    auto* column = new XDMColumnImpl(&model.main, node, kv("c"), 0);
    list.appendItem(column);
    return column;
  }

  void enterAll() {
    columns.reset(list.getCount());
    for (int i = 0; i < list.getCount(); ++i) columns.enter(i);
  }

  Model model;
  XDMList list;
  ColumnsByXPath columns{list};
};

TEST_F(ColumnsByXPathTest, HoldsNothingAtFirst) { EXPECT_EQ(columns.find("/a"), nullptr); }

TEST_F(ColumnsByXPathTest, FindsEachOfManyAndNoOther) {
  constexpr int many = 1000;
  for (int i = 0; i < many; ++i) column("/a/b" + std::to_string(i));
  enterAll();
  for (int i = 0; i < many; ++i) EXPECT_EQ(columns.find("/a/b" + std::to_string(i)), list.getItem(i));
  for (const char* absent : {"", "/a", "/a/b", "/a/b1000", "/a/B1"}) EXPECT_EQ(columns.find(absent), nullptr);
}

TEST_F(ColumnsByXPathTest, KeepsTheLaterOfTwoWithOneXPath) {
  column("/a/b");
  XDMColumnImpl* later = column("/a/b");
  enterAll();
  EXPECT_EQ(columns.find("/a/b"), later);
}

TEST_F(ColumnsByXPathTest, TellsLongPathsApartByTheirBeginnings) {
  const std::string end(1000, 'x');
  XDMColumnImpl* b = column("/a/b/" + end);
  XDMColumnImpl* c = column("/a/c/" + end);
  enterAll();
  EXPECT_EQ(columns.find("/a/b/" + end), b);
  EXPECT_EQ(columns.find("/a/c/" + end), c);
  EXPECT_EQ(columns.find("/a/d/" + end), nullptr);
}

TEST_F(ColumnsByXPathTest, IsEmptyAfterAReset) {
  column("/a/b");
  enterAll();
  columns.reset(0);
  EXPECT_EQ(columns.find("/a/b"), nullptr);
}

TEST_F(ColumnsByXPathTest, ExhaustedMemoryIsThrown) {
  AllocationFaults faults(1, AllocationFaults::Extent::once);
  EXPECT_THROW(columns.reset(1000), std::bad_alloc);
}

}  // namespace

// Tests kvxdmlist.cpp: the list behind every collection.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>

#include <cstring>
#include <type_traits>
#include <vector>

#include "allocation_faults.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsNull;

// The fields of a list, to look at what it does not tell.
struct Fields {
  int capacity;
  int count;
  void** items;
};
static_assert(std::is_standard_layout_v<XDMList>);
static_assert(sizeof(XDMList) == sizeof(Fields));

Fields fieldsOf(const XDMList& list) {
  Fields fields;
  std::memcpy(&fields, &list, sizeof fields);
  return fields;
}

std::vector<void*> itemsOf(const XDMList& list) {
  std::vector<void*> items;
  for (int i = 0; i < list.getCount(); ++i) items.push_back(list.getItem(i));
  return items;
}

std::vector<void*> freeSlotsOf(const XDMList& list) {
  Fields fields = fieldsOf(list);
  return std::vector<void*>(fields.items + fields.count, fields.items + fields.capacity);
}

class XDMListTest : public ::testing::Test {
 protected:
  void fill(int count) {
    for (int i = 0; i < count; ++i) ASSERT_TRUE(list.appendItem(&things[i]));
  }

  char things[32] = {};
  void* a = &things[0];
  void* b = &things[1];
  void* c = &things[2];
  void* x = &things[31];
  XDMList list;
};

TEST_F(XDMListTest, NewListHasNoSlots) {
  EXPECT_EQ(fieldsOf(list).capacity, 0);
  EXPECT_EQ(fieldsOf(list).items, nullptr);
  EXPECT_EQ(list.getCount(), 0);
}

TEST_F(XDMListTest, ItemsOutOfRangeAreNull) {
  fill(3);
  EXPECT_EQ(list.getItem(-1), nullptr);
  EXPECT_EQ(list.getItem(3), nullptr);
  EXPECT_EQ(list.getItem(2), c);
}

TEST_F(XDMListTest, RemovingOutOfRangeChangesNothing) {
  fill(3);
  EXPECT_EQ(list.removeItem(3), nullptr);
  EXPECT_EQ(list.removeItem(-1), nullptr);
  EXPECT_THAT(itemsOf(list), ElementsAre(a, b, c));
}

TEST_F(XDMListTest, NextOfNullIsTheFirstItem) {
  EXPECT_EQ(list.getNextItem(nullptr), nullptr);
  fill(3);
  EXPECT_EQ(list.getNextItem(nullptr), a);
  EXPECT_EQ(list.getNextItem(a), b);
}

TEST_F(XDMListTest, NextOfTheLastOrOfAStrangerIsNull) {
  fill(3);
  EXPECT_EQ(list.getNextItem(c), nullptr);
  EXPECT_EQ(list.getNextItem(x), nullptr);
}

TEST_F(XDMListTest, GrowsByTenSlots) {
  fill(1);
  EXPECT_EQ(fieldsOf(list).capacity, 10);
  fill(9);
  EXPECT_EQ(fieldsOf(list).capacity, 10);
  fill(1);
  EXPECT_EQ(fieldsOf(list).capacity, 20);
  fill(10);
  EXPECT_EQ(fieldsOf(list).capacity, 30);
}

TEST_F(XDMListTest, FreeSlotsHoldNull) {
  fill(11);
  EXPECT_THAT(freeSlotsOf(list), Each(IsNull()));
  list.removeItem(3);
  list.removeItem(b);
  EXPECT_EQ(freeSlotsOf(list).size(), 11u);
  EXPECT_THAT(freeSlotsOf(list), Each(IsNull()));
}

TEST_F(XDMListTest, NullItemsAreKept) {
  EXPECT_TRUE(list.appendItem(nullptr));
  EXPECT_TRUE(list.appendItem(a));
  EXPECT_THAT(itemsOf(list), ElementsAre(nullptr, a));
}

TEST_F(XDMListTest, InsertsRightAfterThePredecessor) {
  fill(3);
  EXPECT_TRUE(list.insertItem(x, a));
  EXPECT_THAT(itemsOf(list), ElementsAre(a, x, b, c));
}

TEST_F(XDMListTest, InsertsAfterTheFirstOccurrence) {
  fill(2);
  list.appendItem(a);
  EXPECT_TRUE(list.insertItem(x, a));
  EXPECT_THAT(itemsOf(list), ElementsAre(a, x, b, a));
}

TEST_F(XDMListTest, InsertsAtTheEndWhenThePredecessorIsLastOrAbsent) {
  fill(2);
  EXPECT_TRUE(list.insertItem(c, b));
  EXPECT_TRUE(list.insertItem(x, &list));
  EXPECT_THAT(itemsOf(list), ElementsAre(a, b, c, x));
}

TEST_F(XDMListTest, InsertsTheOnlyItemIntoAnEmptyList) {
  EXPECT_TRUE(list.insertItem(x, a));
  EXPECT_THAT(itemsOf(list), ElementsAre(x));
}

TEST_F(XDMListTest, InsertingIntoAFullListGrowsIt) {
  fill(10);
  EXPECT_TRUE(list.insertItem(x, &things[8]));
  EXPECT_EQ(list.getItem(9), x);
  EXPECT_EQ(list.getItem(10), &things[9]);
  EXPECT_EQ(fieldsOf(list).capacity, 20);
}

TEST_F(XDMListTest, InsertsAtEveryPosition) {
  for (int position = 0; position <= 3; ++position) {
    XDMList three;
    for (void* item : {a, b, c}) three.appendItem(item);
    EXPECT_TRUE(three.insertItemAt(position, x));
    std::vector<void*> expected = {a, b, c};
    expected.insert(expected.begin() + position, x);
    EXPECT_EQ(itemsOf(three), expected);
  }
}

TEST_F(XDMListTest, MovesAnItemByOne) {
  fill(3);
  list.moveUp(b);
  EXPECT_THAT(itemsOf(list), ElementsAre(b, a, c));
  list.moveDown(a);
  EXPECT_THAT(itemsOf(list), ElementsAre(b, c, a));
}

TEST_F(XDMListTest, MovingBeyondTheEndsOrAStrangerChangesNothing) {
  fill(3);
  list.moveUp(a);
  list.moveDown(c);
  list.moveUp(x);
  list.moveDown(x);
  EXPECT_THAT(itemsOf(list), ElementsAre(a, b, c));
}

TEST_F(XDMListTest, RemovingTheOnlyItemKeepsTheSlots) {
  fill(1);
  EXPECT_EQ(list.removeItem(0), a);
  EXPECT_EQ(list.getCount(), 0);
  EXPECT_EQ(fieldsOf(list).items[0], nullptr);
  EXPECT_EQ(fieldsOf(list).capacity, 10);
}

TEST_F(XDMListTest, RemovalClosesTheGap) {
  fill(3);
  EXPECT_EQ(list.removeItem(1), b);
  EXPECT_THAT(itemsOf(list), ElementsAre(a, c));
  list.removeItem(x);
  EXPECT_THAT(itemsOf(list), ElementsAre(a, c));
}

TEST_F(XDMListTest, RemovesTheFirstOfTwoEqualItems) {
  for (void* item : {a, b, a, c}) list.appendItem(item);
  list.removeItem(a);
  EXPECT_THAT(itemsOf(list), ElementsAre(b, a, c));
}

TEST_F(XDMListTest, MovesTheFirstOfTwoEqualItems) {
  for (void* item : {b, a, c, a}) list.appendItem(item);
  list.moveUp(a);
  EXPECT_THAT(itemsOf(list), ElementsAre(a, b, c, a));
  list.moveDown(a);
  EXPECT_THAT(itemsOf(list), ElementsAre(b, a, c, a));
}

TEST_F(XDMListTest, WalksFromTheFirstOfTwoEqualItems) {
  for (void* item : {a, b, a, c}) list.appendItem(item);
  EXPECT_EQ(list.getNextItem(a), b);
}

TEST_F(XDMListTest, ReleasingAnUnusedListIsHarmless) {
  list.release();
  list.release();
  EXPECT_EQ(list.getCount(), 0);
}

TEST_F(XDMListTest, AReleasedListCanBeUsedAgain) {
  fill(11);
  list.release();
  EXPECT_EQ(fieldsOf(list).capacity, 0);
  EXPECT_EQ(fieldsOf(list).items, nullptr);
  fill(2);
  EXPECT_THAT(itemsOf(list), ElementsAre(a, b));
}

TEST_F(XDMListTest, ExhaustedMemoryLeavesAFullListAsItWas) {
  fill(10);
  Fields before = fieldsOf(list);
  AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
  EXPECT_FALSE(list.appendItem(x));
  EXPECT_FALSE(list.insertItem(x, a));
  EXPECT_FALSE(list.insertItemAt(0, x));
  Fields after = fieldsOf(list);
  EXPECT_EQ(after.capacity, 10);
  EXPECT_EQ(after.count, 10);
  EXPECT_EQ(after.items, before.items);
}

TEST_F(XDMListTest, AFreeSlotNeedsNoMemory) {
  fill(9);
  AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
  EXPECT_TRUE(list.appendItem(x));
}

}  // namespace

// Tests how a host selects and edits columns.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>

#include <string>
#include <vector>

#include "host_model.h"
#include "library_model.h"

namespace {

using ::testing::ElementsAre;

class HostColumns : public ::testing::Test {
 protected:
  XDMNode* node(const char* xpath) { return nodeAt(main.get(), xpath); }

  std::vector<std::string> names() {
    std::vector<std::string> names;
    for (int i = 0; i < main->getSelectedColumns(); ++i) names.push_back(str(main->getSelectedColumn(i)->getName()));
    return names;
  }

  XDMMainPtr main = loadModel(libraryModel);
  XDMNode* title = node("/library/book/title");
  KvbString error = kv("untouched");
};

TEST_F(HostColumns, ComeBackInTheOrderOfSelection) {
  node("/library/book/m:price")->selectAsColumn(kv(""), false);
  node("/library/book/@isbn")->selectAsColumn(kv("number"), false);
  title->selectAsColumn(kv(""), false);
  EXPECT_THAT(names(), ElementsAre("price", "number", "title"));
  EXPECT_EQ(main->getSelectedColumn(3), nullptr);
  EXPECT_EQ(main->getSelectedColumn(-1), nullptr);
}

TEST_F(HostColumns, OfOneNodeAreNumbered) {
  for (int i = 0; i < 3; ++i) title->selectAsColumn(kv(""), false);
  EXPECT_THAT(names(), ElementsAre("title", "title1", "title2"));
}

TEST_F(HostColumns, WithANameInUseAreRefused) {
  XDMColumn* first = title->selectAsColumn(kv("t"), false);
  EXPECT_EQ(node("/library/address")->selectAsColumn(kv("t"), false), nullptr);
  EXPECT_EQ(main->getSelectedColumns(), 1);
  EXPECT_EQ(main->getSelectedColumn(0), first);
}

TEST_F(HostColumns, StartWithTheValuesOfTheirNode) {
  XDMColumn* column = title->selectAsColumn(kv("t"), true);
  EXPECT_EQ(column->getNode(), title);
  EXPECT_EQ(column->getIsGroupBy(), 1);
  EXPECT_EQ(column->getType(), 4);
  EXPECT_EQ(column->getMaximumLength(), 0);
  EXPECT_EQ(column->getValidValues(), 0);
  EXPECT_EQ(column->getDefault().length(), 0);
  EXPECT_EQ(column->getFormat().length(), 0);
  EXPECT_EQ(column->getInformat().length(), 0);
  EXPECT_EQ(str(column->getXPath()), "/library/book/title");
}

TEST_F(HostColumns, OfAttributesStartWithoutType) {
  XDMColumn* column = node("/library/book/@isbn")->selectAsColumn(kv(""), false);
  EXPECT_EQ(column->getType(), 0);
  column->setMaximumLength(13);
  EXPECT_EQ(column->getMaximumLength(), 0);
  column->setType(4);
  EXPECT_EQ(column->getMaximumLength(), 13);
}

TEST_F(HostColumns, KeepWhatIsSetAndLeaveTheNodeAlone) {
  XDMColumn* column = title->selectAsColumn(kv("t"), false);
  column->setFormat(kv("upper"));
  column->setInformat(kv("trimmed"));
  column->setMaximumLength(20);
  column->setType(5);
  column->setName(kv("renamed"));
  column->setIsGroupBy(true);
  EXPECT_EQ(str(column->getFormat()), "upper");
  EXPECT_EQ(str(column->getInformat()), "trimmed");
  EXPECT_EQ(column->getType(), 5);
  EXPECT_EQ(str(column->getName()), "renamed");
  EXPECT_EQ(column->getIsGroupBy(), 1);
  EXPECT_EQ(title->getFormat().length(), 0);
  EXPECT_EQ(title->getType(), 4);
}

TEST_F(HostColumns, DoNotFreeTheNameThatTheyHadBefore) {
  title->selectAsColumn(kv("t"), false)->setName(kv("renamed"));
  EXPECT_EQ(title->selectAsColumn(kv("t"), false), nullptr);
}

TEST_F(HostColumns, CheckDefaultsAgainstTheirValidValues) {
  XDMColumn* column = title->selectAsColumn(kv("t"), false);
  EXPECT_TRUE(column->setDefault(kv("any"), &error));
  EXPECT_TRUE(column->addValidValue(kv("A"), &error));
  EXPECT_TRUE(column->addValidValue(kv("B"), &error));
  EXPECT_FALSE(column->setDefault(kv("C"), &error));
  EXPECT_EQ(str(column->getDefault()), "any");
  EXPECT_TRUE(column->setDefault(kv("B"), &error));
  EXPECT_EQ(str(column->getDefault()), "B");
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(HostColumns, ListTheirValidValues) {
  XDMColumn* column = title->selectAsColumn(kv("t"), false);
  for (const char* value : {"B", "A", "B"}) EXPECT_TRUE(column->addValidValue(kv(value), &error));
  EXPECT_EQ(column->getValidValues(), 3);
  EXPECT_EQ(str(column->getValidValue(0)), "B");
  EXPECT_EQ(str(column->getValidValue(1)), "A");
  EXPECT_EQ(column->getValidValue(3).length(), 0);
  EXPECT_EQ(column->getValidValue(-1).length(), 0);
}

TEST_F(HostColumns, TakeAnXPathThatLeadsThroughTheTree) {
  XDMColumn* column = title->selectAsColumn(kv("t"), false);
  for (const char* xpath : {"/library/book[2]/title", "/library/book/@any", "/library/book/m:price"}) {
    EXPECT_TRUE(column->setXPath(kv(xpath), &error)) << xpath;
    EXPECT_EQ(str(column->getXPath()), xpath);
  }
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(HostColumns, KeepTheirXPathWhenAnotherIsRefused) {
  XDMColumn* column = title->selectAsColumn(kv("t"), false);
  EXPECT_FALSE(column->setXPath(kv("/library/book/price"), &error));
  EXPECT_EQ(str(error), catalogue(1445, "price"));
  EXPECT_EQ(str(column->getXPath()), "/library/book/title");
}

}  // namespace

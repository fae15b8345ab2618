// Tests the XMLMap import as a host sees it: through the shared object and the public header only.
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>

#include <string>

#include "temporary.h"
#include "texts.h"

namespace {

constexpr const char* orders =
    "<ROWMAPS version='1.9'><TABLE name='items'><TABLE-PATH syntax='XPath'>/orders/order/item</TABLE-PATH>"
    "<COLUMN name='order' retain='yes'><PATH syntax='XPath'>/orders/order/@id</PATH>"
    "<DATATYPE>string</DATATYPE><LENGTH>12</LENGTH></COLUMN>"
    "<COLUMN name='state'><PATH syntax='XPath'>/orders/order/item/@state</PATH><DATATYPE>string</DATATYPE>"
    "<LENGTH>4</LENGTH><DEFAULT>new</DEFAULT><ENUM><VALUE>new</VALUE><VALUE>sent</VALUE></ENUM></COLUMN>"
    "<COLUMN name='due'><PATH syntax='XPath'>/orders/order/item/due</PATH><DATATYPE>date</DATATYPE>"
    "<INFORMAT>B8601DA</INFORMAT></COLUMN></TABLE></ROWMAPS>";

class XmlMapImport : public testing::Test {
 protected:
  bool import(const std::string& map, const char* table = "", const char* groupBy = "", unsigned flags = 0) {
    return main_->createFromXMLMap(kv(folder_.write("map.xml", map)), kv(table), kv(groupBy), flags, &error_);
  }

  XDMColumn* column(int index) { return main_->getSelectedColumn(index); }

  TemporaryFolder folder_;
  XDMMainPtr main_{kvxdmCreateMain(0)};
  KvbString error_;
};

TEST_F(XmlMapImport, BuildsTheTree) {
  ASSERT_TRUE(import(orders)) << str(error_);
  XDMElement* order = main_->getRootNode()->getChild();
  EXPECT_EQ(str(order->getXPath()), "/orders/order");
  EXPECT_EQ(str(order->getNextAttribute(nullptr)->getXPath()), "/orders/order/@id");
  EXPECT_FALSE(order->getDecidesRow());
  EXPECT_TRUE(order->getChild()->getDecidesRow());
  EXPECT_EQ(order->getChild()->getNextSibling(), nullptr);
}

TEST_F(XmlMapImport, SelectsAndTypesTheColumns) {
  ASSERT_TRUE(import(orders)) << str(error_);
  ASSERT_EQ(main_->getSelectedColumns(), 3);
  EXPECT_EQ(str(column(0)->getName()), "order");
  EXPECT_EQ(column(0)->getType(), 4);
  EXPECT_EQ(column(0)->getMaximumLength(), 12);
  EXPECT_EQ(str(column(1)->getDefault()), "new");
  EXPECT_EQ(column(1)->getValidValues(), 2);
  EXPECT_EQ(str(column(1)->getValidValue(1)), "sent");
  EXPECT_EQ(column(2)->getType(), 5);
  EXPECT_EQ(str(column(2)->getFormat()), "yyyy-MM-dd");
  EXPECT_EQ(str(column(2)->getInformat()), "yyyyMMdd");
}

TEST_F(XmlMapImport, GroupsByAStringOrByRetain) {
  ASSERT_TRUE(import(orders, "items", "a=order b=due")) << str(error_);
  EXPECT_EQ(column(0)->getIsGroupBy(), 2);
  EXPECT_EQ(column(1)->getIsGroupBy(), 0);
  EXPECT_EQ(column(2)->getIsGroupBy(), 1);
  main_.reset(kvxdmCreateMain(0));
  ASSERT_TRUE(import(orders, "items", "", 0x80000000)) << str(error_);
  EXPECT_EQ(column(0)->getIsGroupBy(), 1);
  EXPECT_EQ(column(2)->getIsGroupBy(), 0);
}

TEST_F(XmlMapImport, GivesAModelThatCanBeSavedAndQueried) {
  ASSERT_TRUE(import(orders)) << str(error_);
  KvbString document;
  EXPECT_TRUE(main_->saveToXML(&document, &error_)) << str(error_);
  EXPECT_NE(main_->genXQueryToColumns(true, false, true, false, &error_).length(), 0) << str(error_);
  EXPECT_NE(main_->genXQueryFromColumns(true, false, &error_).length(), 0) << str(error_);
}

TEST_F(XmlMapImport, TellsWhatIsWrongWithTheMap) {
  const struct {
    const char* map;
    const char* number;
  } cases[] = {
      {"<ROWMAPS", "XDM472: "},
      {"<xdm version='1.0'/>", "XDM1448: "},
      {"<ROWMAPS version='3'/>", "XDM1449: "},
      {"<ROWMAPS version='2.1'/>", "XDM1450: "},
      {"<ROWMAPS version='2.1'><TABLE name='t'/></ROWMAPS>", "XDM1452: "},
      {"<ROWMAPS version='2.1'><TABLE name='t'><COLUMN/></TABLE></ROWMAPS>", "XDM1415: "},
      {"<ROWMAPS version='2.1'><TABLE name='t'><TABLE-PATH>t</TABLE-PATH></TABLE></ROWMAPS>", "XDM1443: "},
  };
  for (const auto& each : cases) {
    main_.reset(kvxdmCreateMain(0));
    error_.setNull();
    EXPECT_FALSE(import(each.map));
    EXPECT_EQ(str(error_).substr(0, std::string(each.number).size()), each.number);
  }
}

TEST_F(XmlMapImport, RefusesAModelThatIsFilled) {
  ASSERT_TRUE(import(orders));
  EXPECT_FALSE(import(orders));
  EXPECT_EQ(str(error_).substr(0, 9), "XDM1422: ");
  EXPECT_EQ(main_->getSelectedColumns(), 3);
}

TEST_F(XmlMapImport, StaysEmptyWhenTheMapIsMissing) {
  EXPECT_FALSE(main_->createFromXMLMap(kv(folder_.file("none.xml")), KvbString(), KvbString(), 0, &error_));
  EXPECT_EQ(str(error_).substr(0, 8), "XDM472: ");
  EXPECT_EQ(main_->getRootNode(), nullptr);
}

}  // namespace

// Tests kvxdmattr.cpp: attribute nodes.
#include <gtest/gtest.h>

#include "model.h"

namespace {

class Attribute : public ::testing::Test {
 protected:
  Model model;
  XDMAttrImpl* id = addAttribute(model.root, "id");
};

TEST_F(Attribute, StartsWithTheValuesOfAnAttribute) {
  EXPECT_EQ(id->nodeType(), 0);
  EXPECT_EQ(id->getChild(), nullptr);
  EXPECT_EQ(id->getType(), 0);
  EXPECT_EQ(id->getNamespace(), nullptr);
  EXPECT_EQ(id->getSelectedXPaths(), 0);
  EXPECT_EQ(str(id->getLocalName()), "id");
}

TEST_F(Attribute, BelongsToItsElement) {
  EXPECT_EQ(id->getParent(), model.root);
  EXPECT_EQ(id->getMain(), &model.main);
}

TEST_F(Attribute, NextSiblingsFollowTheOrderOfCreation) {
  XDMAttrImpl* kind = addAttribute(model.root, "kind");
  XDMAttrImpl* date = addAttribute(model.root, "date");
  EXPECT_EQ(id->getNextSibling(), kind);
  EXPECT_EQ(kind->getNextSibling(), date);
  EXPECT_EQ(date->getNextSibling(), nullptr);
}

TEST_F(Attribute, ReadsItsColumnProperties) {
  KvbString error;
  XDMColumnInfo& info = id->columnInfo();
  info.setType(4);
  info.setMaximumLength(9);
  info.setFormat(kv("F"));
  info.setInformat(kv("I"));
  info.addValidValue(kv("v"), &error);
  EXPECT_EQ(id->getMaximumLength(), 9);
  EXPECT_EQ(str(id->getFormat()), "F");
  EXPECT_EQ(str(id->getInformat()), "I");
  EXPECT_EQ(id->getValidValues(), 1);
  EXPECT_EQ(str(id->getValidValue(0)), "v");
}

TEST_F(Attribute, SelectsItselfAsAColumn) {
  XDMColumn* column = id->selectAsColumn(kv(""), false);
  EXPECT_EQ(column->getNode(), id);
  EXPECT_EQ(str(column->getName()), "id");
  EXPECT_EQ(column->getIsGroupBy(), 0);
  EXPECT_EQ(model.main.getSelectedColumn(0), column);
}

TEST_F(Attribute, TakesANamespace) {
  XDMNSImpl* declaration = model.root->createNamespace(kv("p"), kv("u"));
  id->setNamespace(declaration);
  EXPECT_EQ(id->getNamespace(), declaration);
  EXPECT_EQ(str(id->getXPath()), "/a/@id");
}

TEST_F(Attribute, StoresAnXPathWithoutChecking) {
  EXPECT_TRUE(id->setXPath(kv("/nowhere")));
  EXPECT_EQ(str(id->getXPath()), "/nowhere");
}

TEST_F(Attribute, StoresADefault) {
  model.main.setErrorMessage(kv("before"));
  EXPECT_TRUE(id->setDefault(kv("X")));
  EXPECT_EQ(str(id->getDefault()), "X");
  EXPECT_EQ(model.error(), "before");
}

// The refusal has no text of its own, and that is what the main object receives.
TEST_F(Attribute, ARefusedDefaultLeavesAnEmptyErrorMessage) {
  KvbString error;
  id->columnInfo().addValidValue(kv("A"), &error);
  id->setDefault(kv("A"));
  model.main.setErrorMessage(kv("before"));
  EXPECT_FALSE(id->setDefault(kv("X")));
  EXPECT_EQ(str(id->getDefault()), "A");
  EXPECT_EQ(model.error(), "");
}

}  // namespace

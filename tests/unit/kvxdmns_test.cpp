// Tests kvxdmns.cpp: namespace declarations.
#include <gtest/gtest.h>

#include "model.h"

namespace {

TEST(Namespace, KnowsPrefixUriAndElement) {
  Model model;
  XDMNSImpl* declaration = model.root->createNamespace(kv("p"), kv("urn:p"));
  EXPECT_EQ(str(declaration->getPrefix()), "p");
  EXPECT_EQ(str(declaration->getURI()), "urn:p");
  EXPECT_EQ(declaration->getParent(), model.root);
}

TEST(Namespace, NextSiblingsFollowTheOrderOfCreation) {
  Model model;
  XDMNSImpl* first = model.root->createNamespace(kv("z"), kv("urn:z"));
  XDMNSImpl* second = model.root->createNamespace(kv("a"), kv("urn:a"));
  XDMNSImpl* third = model.root->createNamespace(kv("z"), kv("urn:z"));
  EXPECT_EQ(model.root->getNextNamespace(nullptr), first);
  EXPECT_EQ(first->getNextSibling(), second);
  EXPECT_EQ(second->getNextSibling(), third);
  EXPECT_EQ(third->getNextSibling(), nullptr);
}

TEST(Namespace, WithoutTextsHasANullPrefixAndUri) {
  Model model;
  XDMNSImpl declaration(model.root);
  EXPECT_TRUE(declaration.getPrefix().isNull());
  EXPECT_TRUE(declaration.getURI().isNull());
  EXPECT_EQ(declaration.getParent(), model.root);
}

TEST(Namespace, OutsideItsElementsListHasNoNextSibling) {
  Model model;
  model.root->createNamespace(kv("p"), kv("urn:p"));
  XDMNSImpl stranger(model.root, kv("p"), kv("urn:p"));
  EXPECT_EQ(stranger.getNextSibling(), nullptr);
}

TEST(Namespace, WithoutElementHasNeitherParentNorSibling) {
  XDMNSImpl declaration(nullptr, kv("p"), kv("urn:p"));
  EXPECT_EQ(declaration.getParent(), nullptr);
  EXPECT_EQ(declaration.getNextSibling(), nullptr);
}

TEST(Namespace, KeepsAnEmptyPrefix) {
  XDMNSImpl declaration(nullptr, kv(""), kv("urn:p"));
  EXPECT_EQ(declaration.getPrefix().length(), 0);
  EXPECT_FALSE(declaration.getPrefix().isNull());
}

}  // namespace

// Tests kvxdmmap_path.cpp: plain location paths, taken apart and turned into nodes.
#include "kvxdmmap_path.h"

#include <gtest/gtest.h>

#include "xmlmap.h"

namespace {

using xmlmap::buildFromXPath;
using xmlmap::LocationStep;
using xmlmap::separateXPathStep;

/** A text in quotes, or null. */
std::string shown(const KvbString& text) { return text.isNull() ? "null" : "'" + str(text) + "'"; }

TEST(PlainStep, IsTakenApart) {
  const struct {
    const char* step;
    const char* parts;
  } cases[] = {
      {"item", "null 'item' null"},
      {"p:item", "'p' 'item' null"},
      {"@id", "null 'id' null"},
      {"@p:id", "'p' 'id' null"},
      {"item[2]", "null 'item' '[2]'"},
      {"p:item[@q:id='a']", "'p' 'item' '[@q:id='a']'"},
      {"item[1][2]", "null 'item' '[1][2]'"},
      {"item[2", "null 'item' '[2'"},
      {"[2]", "null '[2]' null"},
      {"@[2]", "null '' '[2]'"},
      {"@@id", "null '@id' null"},
      {":item", "null ':item' null"},
      {"@:id", "null ':id' null"},
      {"p:", "'p' '' null"},
      {"p:q:item", "'p' 'q:item' null"},
      {"p@x", "null 'p@x' null"},
      {"{2}item", "null '{2}item' null"},
      {"", "null '' null"},
  };
  for (const auto& each : cases) {
    LocationStep step(each.step);
    EXPECT_TRUE(separateXPathStep(&step));
    EXPECT_EQ(shown(step.prefix) + " " + shown(step.localName) + " " + shown(step.predicate), each.parts) << each.step;
  }
}

/** A model to which paths are added one by one. */
class PlainPath : public testing::Test {
 protected:
  ~PlainPath() override { main_->release(); }

  /** The OUTPUT that later paths are built with. */
  void setOutput(std::string_view xml) {
    ASSERT_TRUE(dom_.loadXML(kv(xml)));
    output_ = dom_.getRoot();
  }

  XDMNode* build(std::string_view path, bool isTablePath = false) {
    return buildFromXPath(main_, kv(path), output_, isTablePath);
  }

  void expectRefused(std::string_view path, const std::string& text) {
    EXPECT_EQ(build(path), nullptr) << path;
    EXPECT_EQ(str(main_->errorMessage()), text) << path;
  }

  std::string tree() { return outline(main_->root()); }

  XDMMainImpl* main_ = new XDMMainImpl(0);
  KvDom dom_;
  KvDomNode output_;
};

TEST_F(PlainPath, MakesElementsAndAFinalAttribute) {
  XDMNode* id = build("/doc/item/@id");
  ASSERT_NE(id, nullptr);
  EXPECT_EQ(id->nodeType(), 0);
  EXPECT_EQ(str(id->getXPath()), "/doc/item/@id");
  EXPECT_EQ(tree(), "doc(item(@id))");
}

TEST_F(PlainPath, ReusesTheNodesOfAnEarlierPath) {
  XDMNode* id = build("/doc/item/@id");
  build("/doc/item/name");
  EXPECT_EQ(build("/doc/item/@id"), id);
  EXPECT_EQ(tree(), "doc(item(@id name))");
}

TEST_F(PlainPath, ReturnsTheRootForARootPath) {
  XDMNode* root = build("/doc");
  EXPECT_EQ(root, main_->root());
  EXPECT_EQ(build("/doc/"), root);
  EXPECT_EQ(build("/doc"), root);
  EXPECT_EQ(tree(), "doc");
}

TEST_F(PlainPath, EndsAtASingleTrailingSlash) {
  EXPECT_EQ(str(build("/doc/item/")->getXPath()), "/doc/item");
  EXPECT_EQ(tree(), "doc(item)");
}

TEST_F(PlainPath, IgnoresPredicates) {
  build("/doc/item[2]/name[not(@xml:lang)]");
  build("/doc/item[1]/@id[1]");
  EXPECT_EQ(tree(), "doc(item(@id name))");
}

TEST_F(PlainPath, CutsStepsInsidePredicatesToo) {
  build("/doc/item[a/b]/name");
  EXPECT_EQ(tree(), "doc(item(b](name)))");
}

TEST_F(PlainPath, AppliesAStepBehindAnAttributeToTheAttributesElement) {
  XDMNode* b = build("/doc/@a/b");
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(str(b->getXPath()), "/doc/b");
  EXPECT_EQ(tree(), "doc(@a b)");
}

TEST_F(PlainPath, DropsTheMarkOfARootWrittenAsAnAttribute) {
  EXPECT_EQ(build("/@doc/x")->nodeType(), 1);
  EXPECT_EQ(tree(), "doc(x)");
  expectRefused("/@doc/y", catalogue(1443, "/doc", "@doc"));
}

TEST_F(PlainPath, RefusesAPathThatDoesNotBeginWithASlash) {
  expectRefused("doc/item", catalogue(1443, "/", "d"));
  expectRefused("", catalogue(1443, "/", ""));
  EXPECT_EQ(main_->root(), nullptr);
}

TEST_F(PlainPath, RefusesAnEmptyRoot) {
  expectRefused("/", catalogue(1443, "root", "<empty>"));
  expectRefused("//item", catalogue(1443, "root", "<empty>"));
  EXPECT_EQ(main_->root(), nullptr);
}

TEST_F(PlainPath, RefusesAnEmptyStepAndKeepsWhatCameBefore) {
  expectRefused("/doc//item", catalogue(1443, "step", "<empty>"));
  expectRefused("/doc/a//", catalogue(1443, "step", "<empty>"));
  expectRefused("/doc//", catalogue(1443, "step", "<empty>"));
  EXPECT_EQ(tree(), "doc(a)");
}

TEST_F(PlainPath, RefusesAnotherRoot) {
  build("/doc");
  expectRefused("/other/x", catalogue(1443, "/doc", "other"));
  expectRefused("/doc[1]/x", catalogue(1443, "/doc", "doc[1]"));
  expectRefused("/Doc", catalogue(1443, "/doc", "Doc"));
  EXPECT_EQ(tree(), "doc");
}

TEST_F(PlainPath, ComparesTheRootWithItsXPathAsSetLast) {
  build("/doc", true);
  main_->root()->setXPath(kv("/doc[@x]"));
  EXPECT_NE(build("/doc[@x]/item"), nullptr);
  expectRefused("/doc/item", catalogue(1443, "/doc[@x]", "doc"));
}

TEST_F(PlainPath, MarksTheElementsOfColumnPathsOnly) {
  build("/doc/row/z", true);
  build("/doc/row/a");
  EXPECT_EQ(tree(), "doc(row(a z))");  // z was not marked, so a went before it
  build("/doc/row/b");
  EXPECT_EQ(tree(), "doc(row(a b z))");  // a was
}

TEST_F(PlainPath, DoesNotMarkTheElementOfAnAttribute) {
  build("/doc/@id");
  build("/doc/a");
  EXPECT_EQ(tree(), "doc(@id a)");
}

// Namespaces

TEST_F(PlainPath, RefusesAnUndeclaredPrefix) {
  expectRefused("/doc/a/p:item[1]", catalogue(1444, "p:item[1]"));
  expectRefused("/doc/@p:id", catalogue(1444, "@p:id"));
  EXPECT_EQ(tree(), "doc(a)");
}

TEST_F(PlainPath, DeclaresTheHeadingsNamespacesOnANewRoot) {
  setOutput(
      "<OUTPUT><TABLEREF name='t'/><HEADING><ATTRIBUTE name='xmlns:p' value='urn:p'/><X name='xmlns:x'/>"
      "<ATTRIBUTE value='v'/><ATTRIBUTE name='version' value='1'/><ATTRIBUTE name='xmlnsp' value='1'/>"
      "<ATTRIBUTE name='xmlns:q'/></HEADING><HEADING><ATTRIBUTE name='xmlns:r' value='r'/></HEADING></OUTPUT>");
  build("/doc/p:item/@p:id");
  EXPECT_EQ(declarations(main_->root()), "p=urn:p q=");
  EXPECT_EQ(tree(), "doc(p:item(@p:id))");
  EXPECT_EQ(str(build("/doc/p:item/@p:id")->getXPath()), "/doc/p:item/@p:id");
}

TEST_F(PlainPath, ReadsNoHeadingOnceThereIsARoot) {
  build("/doc");
  setOutput("<OUTPUT><HEADING><ATTRIBUTE name='xmlns:p' value='urn:p'/></HEADING></OUTPUT>");
  expectRefused("/doc/p:item", catalogue(1444, "p:item"));
}

TEST_F(PlainPath, GivesARootWithoutPrefixTheDefaultNamespace) {
  setOutput("<OUTPUT><HEADING><ATTRIBUTE name='xmlns' value='urn:d'/></HEADING></OUTPUT>");
  build("/doc/item");
  ASSERT_NE(main_->root()->getNamespace(), nullptr);
  EXPECT_TRUE(main_->root()->getNamespace()->getPrefix().isNull());
  EXPECT_EQ(str(main_->root()->getNamespace()->getURI()), "urn:d");
  EXPECT_EQ(main_->root()->firstChild()->getNamespace(), nullptr);
}

TEST_F(PlainPath, GivesARootWithAPrefixItsNamespace) {
  setOutput(
      "<OUTPUT><HEADING><ATTRIBUTE name='xmlns' value='urn:d'/><ATTRIBUTE name='xmlns:p' value='urn:p'/>"
      "</HEADING></OUTPUT>");
  build("/p:doc");
  EXPECT_EQ(str(main_->root()->getNamespace()->getURI()), "urn:p");
  EXPECT_EQ(str(main_->root()->getXPath()), "/p:doc");
}

TEST_F(PlainPath, GivesTheRootTheLastOfSeveralFittingDeclarations) {
  setOutput(
      "<OUTPUT><HEADING><ATTRIBUTE name='xmlns:p' value='1'/><ATTRIBUTE name='xmlns:p' value='2'/>"
      "<ATTRIBUTE name='xmlns:q' value='3'/><ATTRIBUTE name='xmlns:P' value='4'/></HEADING></OUTPUT>");
  build("/p:doc");
  EXPECT_EQ(str(main_->root()->getNamespace()->getURI()), "2");
}

TEST_F(PlainPath, LeavesARootWithAnUndeclaredPrefixWithoutNamespace) {
  build("/p:doc");
  EXPECT_EQ(main_->root()->getNamespace(), nullptr);
  EXPECT_EQ(str(main_->root()->getLocalName()), "doc");
  EXPECT_NE(build("/p:doc/x"), nullptr);
}

TEST_F(PlainPath, DeclaresAnEmptyPrefixForAnEntryThatEndsInAColon) {
  setOutput("<OUTPUT><HEADING><ATTRIBUTE name='xmlns:' value='u'/></HEADING></OUTPUT>");
  build("/doc");
  XDMNamespace* declared = main_->root()->getNextNamespace(nullptr);
  EXPECT_FALSE(declared->getPrefix().isNull());
  EXPECT_EQ(main_->root()->getNamespace(), declared);
}

TEST_F(PlainPath, LeavesAnExistingChildItsNamespace) {
  setOutput("<OUTPUT><HEADING><ATTRIBUTE name='xmlns:p' value='first'/></HEADING></OUTPUT>");
  XDMNode* item = build("/doc/a/p:item");
  main_->root()->firstChild()->createNamespace(kv("p"), kv("second"));
  EXPECT_EQ(build("/doc/a/p:item"), item);
  EXPECT_EQ(str(item->getNamespace()->getURI()), "first");
  EXPECT_EQ(str(build("/doc/a/p:other")->getNamespace()->getURI()), "second");
}

TEST_F(PlainPath, KeepsChildrenOfDifferentPrefixesApart) {
  setOutput(
      "<OUTPUT><HEADING><ATTRIBUTE name='xmlns:p' value='u'/><ATTRIBUTE name='xmlns:q' value='u'/></HEADING>"
      "</OUTPUT>");
  build("/doc/p:a");
  build("/doc/q:a");
  build("/doc/a");
  build("/doc/@p:a");
  build("/doc/@q:a");
  build("/doc/@a");
  EXPECT_EQ(tree(), "doc(@p:a @a p:a q:a a)");  // attributes are told apart by URI, children by prefix
}

}  // namespace

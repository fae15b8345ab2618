// Tests kvxdmmap_path.cpp: extended location paths, whose steps name their namespaces by number.
#include <gtest/gtest.h>

#include "kvxdmmap_path.h"
#include "xmlmap.h"

namespace {

using xmlmap::buildFromXPathENR;
using xmlmap::LocationStep;
using xmlmap::separateXPathENRStep;

std::string shown(const KvbString& text) { return text.isNull() ? "null" : "'" + str(text) + "'"; }

TEST(ExtendedStep, IsTakenApart) {
  const struct {
    const char* step;
    const char* parts;
  } cases[] = {
      {"item", "null 'item' null"},     {"{2}item", "'2' 'item' null"},     {"@{2}id", "'2' 'id' null"},
      {"@id", "null 'id' null"},        {"{2}item[1]", "'2' 'item' '[1]'"}, {"item[{2}x]", "null 'item' '[{2}x]'"},
      {"{12}", "'12' '' null"},         {"{ 2 }item", "' 2 ' 'item' null"}, {"{a}b}c", "'a' 'b}c' null"},
      {"p:item", "null 'p:item' null"}, {"a{2}b", "null 'a{2}b' null"},     {"[1]", "null '[1]' null"},
  };
  for (const auto& each : cases) {
    LocationStep step(each.step);
    EXPECT_TRUE(separateXPathENRStep(&step)) << each.step;
    EXPECT_EQ(shown(step.reference) + " " + shown(step.localName) + " " + shown(step.predicate), each.parts)
        << each.step;
    EXPECT_TRUE(step.prefix.isNull());
  }
}

TEST(ExtendedStep, NeedsAClosedBraceAroundSomething) {
  for (const char* text : {"{}item", "{1item", "{", "@{}id", "@{1", "{1[x]}item"}) {
    LocationStep step(text);
    EXPECT_FALSE(separateXPathENRStep(&step)) << text;
  }
}

constexpr std::string_view twoNamespaces =
    "<NAMESPACES><NS id='1' prefix='a'> urn:a\n</NS><OTHER/><NS id='2' prefix=''>urn:d</NS></NAMESPACES>";

class ExtendedPath : public testing::Test {
 protected:
  ExtendedPath() { main_->setErrorMessage(kv("before")); }
  ~ExtendedPath() override { main_->release(); }

  void setNamespaces(std::string_view xml) {
    ASSERT_TRUE(dom_.loadXML(kv(xml)));
    namespaces_ = dom_.getRoot();
  }

  XDMNode* build(std::string_view path, bool isTablePath = false) {
    path_ = kv(path);
    return buildFromXPathENR(main_, &path_, namespaces_, isTablePath);
  }

  /** Builds `path` and gives the path that comes back. */
  std::string resolved(std::string_view path) {
    EXPECT_NE(build(path), nullptr) << path << ": " << str(main_->errorMessage());
    return str(path_);
  }

  void expectRefused(std::string_view path, const std::string& text) {
    EXPECT_EQ(build(path), nullptr) << path;
    EXPECT_EQ(str(main_->errorMessage()), text) << path;
    EXPECT_EQ(str(path_), path);
  }

  std::string tree() { return outline(main_->root()); }

  std::string namespaceList() {
    std::string text;
    for (int i = 0; i < main_->getNSList()->getCount(); ++i) {
      auto* item = static_cast<XDMNSImpl*>(main_->getNSList()->getItem(i));
      text += (i == 0 ? "" : " ") + str(item->getPrefix()) + "=" + str(item->getURI());
    }
    return text;
  }

  XDMMainImpl* main_ = new XDMMainImpl(0);
  KvDom dom_;
  KvDomNode namespaces_;
  KvbString path_;
};

TEST_F(ExtendedPath, ResolvesNumbersToPrefixesAndDeclaresThemOnTheRoot) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/{1}doc/{2}item/@{1}code"), "/a:doc/item/@a:code");
  EXPECT_EQ(declarations(main_->root()), "a=urn:a =urn:d");
  EXPECT_EQ(tree(), "a:doc(item(@a:code))");
  EXPECT_EQ(main_->root()->getNamespace(), main_->root()->getNextNamespace(nullptr));
  XDMElemImpl* item = main_->root()->firstChild();
  EXPECT_EQ(item->getNamespace(), nullptr);  // an empty prefix is not looked up
  EXPECT_EQ(item->firstAttribute()->getNamespace(), main_->root()->getNamespace());
}

TEST_F(ExtendedPath, KeepsTheNamespaceListWithoutParents) {
  setNamespaces(twoNamespaces);
  build("/{1}doc");
  EXPECT_EQ(namespaceList(), "a=urn:a =urn:d");
  auto* first = static_cast<XDMNSImpl*>(main_->getNSList()->getItem(0));
  EXPECT_EQ(first->getParent(), nullptr);
  EXPECT_EQ(first->getNextSibling(), nullptr);
}

TEST_F(ExtendedPath, FindsTheNodesOfAnEarlierPath) {
  setNamespaces(twoNamespaces);
  build("/{1}doc/{2}item/@{1}code");
  EXPECT_EQ(resolved("/{1}doc/{1}name"), "/a:doc/a:name");
  EXPECT_EQ(resolved("/{1}doc/{2}item/@{1}code"), "/a:doc/item/@a:code");
  EXPECT_EQ(tree(), "a:doc(item(@a:code) a:name)");
  EXPECT_EQ(namespaceList(), "a=urn:a =urn:d");
}

TEST_F(ExtendedPath, KeepsPredicatesInThePathAndOutOfTheTree) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/{1}doc[1]/{1}item[@x='{2}']/@{1}code[1]"), "/a:doc[1]/a:item[@x='{2}']/@a:code[1]");
  EXPECT_EQ(tree(), "a:doc(a:item(@a:code))");
}

TEST_F(ExtendedPath, ReturnsTheRootForARootPath) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/{1}doc/"), "/a:doc");
  EXPECT_EQ(build("/{1}doc"), main_->root());
}

TEST_F(ExtendedPath, DropsASingleTrailingSlash) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/{1}doc/{1}item/"), "/a:doc/a:item");
}

TEST_F(ExtendedPath, AppliesAStepBehindAnAttributeToTheAttributesElement) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/{1}doc/@{1}a/{1}b"), "/a:doc/@a:a/a:b");
  EXPECT_EQ(tree(), "a:doc(@a:a a:b)");
}

TEST_F(ExtendedPath, DropsTheMarkOfARootWrittenAsAnAttribute) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/@{1}doc"), "/a:doc");
  EXPECT_EQ(resolved("/@{1}doc/x"), "/a:doc/x");
}

TEST_F(ExtendedPath, WorksLikeAPlainOneWithoutReferences) {
  setNamespaces("<NAMESPACES/>");
  EXPECT_EQ(resolved("/doc/item[2]/@id"), "/doc/item[2]/@id");
  EXPECT_EQ(resolved("/doc/item/"), "/doc/item");
  EXPECT_EQ(tree(), "doc(item(@id))");
}

TEST_F(ExtendedPath, KnowsNoWrittenPrefixes) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/a:doc/a:item"), "/a:doc/a:item");
  EXPECT_EQ(str(main_->root()->getLocalName()), "a:doc");
  EXPECT_EQ(main_->root()->firstChild()->getNamespace(), nullptr);
}

TEST_F(ExtendedPath, GivesARootWithoutReferenceTheDefaultNamespace) {
  setNamespaces(twoNamespaces);
  EXPECT_EQ(resolved("/doc/{2}item"), "/doc/item");
  EXPECT_EQ(str(main_->root()->getNamespace()->getURI()), "urn:d");
}

TEST_F(ExtendedPath, GivesTheRootTheLastOfSeveralFittingDeclarations) {
  setNamespaces("<NAMESPACES><NS id='1' prefix='p'>u1</NS><NS id='2' prefix='p'>u2</NS></NAMESPACES>");
  EXPECT_EQ(resolved("/{1}doc/{1}a/{2}b"), "/p:doc/p:a/p:b");
  EXPECT_EQ(str(main_->root()->getNamespace()->getURI()), "u2");
  EXPECT_EQ(str(main_->root()->firstChild()->getNamespace()->getURI()), "u1");  // the look-up takes the first
}

TEST_F(ExtendedPath, MarksTheElementsOfColumnPathsOnly) {
  setNamespaces(twoNamespaces);
  build("/{1}doc/{1}row/z", true);
  build("/{1}doc/{1}row/a");
  EXPECT_EQ(tree(), "a:doc(a:row(a z))");
  build("/{1}doc/{1}row/b");
  EXPECT_EQ(tree(), "a:doc(a:row(a b z))");
}

// Numbers

TEST_F(ExtendedPath, TakesNumbersInAscendingOrderAndRepeatedOnesBeforeTheEarlier) {
  const struct {
    const char* declarations;
    const char* list;
  } cases[] = {
      {"<NS id='1'>u1</NS><NS id='2' prefix='b'>u2</NS><NS id='3' prefix='c'>u3</NS>", "=u1 b=u2 c=u3"},
      {"<NS id='1' prefix='a'>u1</NS><NS id='2' prefix='b'>u2</NS><NS id='2' prefix='c'>u3</NS>", "a=u1 c=u3 b=u2"},
      {"<NS id=' +1 ' prefix='a'> u 1 </NS>", "a=u 1"},
      {"<NS id='1' prefix='a'/><ns id='7'/>", "a="},
      {"", ""},
  };
  for (const auto& each : cases) {
    XDMMainImpl* main = new XDMMainImpl(0);
    std::swap(main, main_);
    setNamespaces("<NAMESPACES>" + std::string(each.declarations) + "</NAMESPACES>");
    build("/doc");
    EXPECT_EQ(namespaceList(), each.list);
    EXPECT_EQ(declarations(main_->root()), each.list);
    main->release();
  }
}

TEST_F(ExtendedPath, RefusesNumbersOutOfOrderAndKeepsThoseBefore) {
  const struct {
    const char* declarations;
    const char* kept;
  } cases[] = {
      {"<NS id='2'>u2</NS><NS id='1'>u1</NS>", ""},
      {"<NS id='1'>u1</NS><NS id='3'>u3</NS>", "=u1"},
      {"<NS id='1'>u1</NS><NS id='1'>u2</NS>", "=u1"},
      {"<NS id='0'>u</NS>", ""},
      {"<NS id='-1'>u</NS>", ""},
      {"<NS id='1a'>u</NS>", ""},
      {"<NS id=''>u</NS>", ""},
      {"<NS>u</NS>", ""},
      {"<NS id='1'>u1</NS><NS id='2147483647'>u</NS>", "=u1"},
  };
  for (const auto& each : cases) {
    XDMMainImpl* main = new XDMMainImpl(0);
    std::swap(main, main_);
    setNamespaces("<NAMESPACES>" + std::string(each.declarations) + "</NAMESPACES>");
    expectRefused("/doc/x", catalogue(1420));
    EXPECT_EQ(namespaceList(), each.kept) << each.declarations;
    EXPECT_EQ(main_->root(), nullptr);
    main->release();
  }
}

TEST_F(ExtendedPath, RefusesReferencesToNoDeclaration) {
  setNamespaces(twoNamespaces);
  for (const char* path : {"/{3}doc", "/{0}doc", "/{-1}doc", "/{a}doc", "/{1x}doc", "/{99999999999}doc"}) {
    XDMMainImpl* main = new XDMMainImpl(0);
    std::swap(main, main_);
    expectRefused(path, catalogue(1420));
    EXPECT_EQ(main_->root(), nullptr);
    EXPECT_EQ(namespaceList(), "a=urn:a =urn:d");
    main->release();
  }
}

TEST_F(ExtendedPath, RefusesReferencesToNoDeclarationInLaterSteps) {
  setNamespaces(twoNamespaces);
  expectRefused("/{1}doc/x/{3}item", catalogue(1420));
  expectRefused("/{9}doc/y", catalogue(1420));
  EXPECT_EQ(tree(), "a:doc(x)");
}

// Declarations that a failed first path has left make the numbers of the map come twice.
TEST_F(ExtendedPath, CannotReadTheDeclarationsTwice) {
  setNamespaces(twoNamespaces);
  expectRefused("/{3}doc", catalogue(1420));
  expectRefused("/{1}doc", catalogue(1420));
  EXPECT_EQ(namespaceList(), "a=urn:a =urn:d");
}

// Failures

TEST_F(ExtendedPath, FailsWithoutAMessageForAnOpenBrace) {
  setNamespaces(twoNamespaces);
  expectRefused("/{}doc", "before");
  expectRefused("/{1doc", "before");
  EXPECT_EQ(main_->root(), nullptr);
  EXPECT_EQ(namespaceList(), "");
  build("/{1}doc");
  expectRefused("/{1}doc/a/{}item", "before");
  expectRefused("/{1}doc/@{1item", "before");
  EXPECT_EQ(tree(), "a:doc(a)");
}

TEST_F(ExtendedPath, RefusesPathsWithoutLeadingSlashAndEmptySteps) {
  setNamespaces(twoNamespaces);
  expectRefused("{1}doc", catalogue(1443, "/", "{"));
  expectRefused("", catalogue(1443, "/", ""));
  expectRefused("/", catalogue(1443, "root", "<empty>"));
  expectRefused("//{1}doc", catalogue(1443, "root", "<empty>"));
  EXPECT_EQ(main_->root(), nullptr);
  expectRefused("/{1}doc//x", catalogue(1443, "step", "<empty>"));
  EXPECT_EQ(tree(), "a:doc");
}

TEST_F(ExtendedPath, RefusesAnotherRoot) {
  setNamespaces(twoNamespaces);
  build("/{1}doc");
  expectRefused("/doc/x", catalogue(1443, "/a:doc", "doc"));
  expectRefused("/{2}doc/x", catalogue(1443, "/a:doc", "doc"));
  expectRefused("/{1}other/x", catalogue(1443, "/a:doc", "a:other"));
  expectRefused("/other[1]/x", catalogue(1443, "/a:doc", "other[1]"));
  EXPECT_NE(build("/{1}doc[1]/x"), nullptr);  // the predicate does not take part
  EXPECT_NE(build("/a:doc/x"), nullptr);      // as written, it is the root's name
}

TEST_F(ExtendedPath, RefusesAReferenceWhosePrefixIsNotInScope) {
  setNamespaces(twoNamespaces);
  main_->createRoot(KvbString(), kv("doc"));
  ASSERT_TRUE(main_->getNSList()->appendItem(new XDMNSImpl(nullptr, kv("a"), kv("urn:a"))));
  expectRefused("/doc/b/{1}item[2]", catalogue(1444, "{1}item[2]"));
  EXPECT_EQ(tree(), "doc(b)");
}

}  // namespace

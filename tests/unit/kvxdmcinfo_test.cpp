// Tests kvxdmcinfo.cpp: the property record of nodes and columns.
#include <gtest/gtest.h>

#include <string>

#include "model.h"

namespace {

class ColumnInfo : public ::testing::Test {
 protected:
  ColumnInfo() { info.setXDM(&model.main); }

  Model model;
  XDMColumnInfo info;
  KvbString error = kv("untouched");
};

using ColumnInfoInADocument = ColumnInfo;

TEST_F(ColumnInfo, StartsEmpty) {
  EXPECT_EQ(info.getNamespace(), nullptr);
  EXPECT_EQ(info.getType(), 0);
  EXPECT_EQ(info.getMaximumLength(), 0);
  EXPECT_EQ(info.getValidValues(), 0);
  for (const KvbString& text :
       {info.getLocalName(), info.getXPath(), info.getFormat(), info.getInformat(), info.getDefault()}) {
    EXPECT_EQ(text.length(), 0);
  }
}

TEST_F(ColumnInfo, KeepsWhatIsSet) {
  XDMNSImpl declaration(model.root, kv("p"), kv("u"));
  info.setLocalName(kv("name"));
  info.setNamespace(&declaration);
  info.setFormat(kv("F"));
  info.setInformat(kv("I"));
  info.setType(5);
  EXPECT_EQ(str(info.getLocalName()), "name");
  EXPECT_EQ(info.getNamespace(), &declaration);
  EXPECT_EQ(str(info.getFormat()), "F");
  EXPECT_EQ(str(info.getInformat()), "I");
  EXPECT_EQ(info.getType(), 5);
}

TEST_F(ColumnInfo, ReportsTheLengthOfStringsOnly) {
  for (kvbType type : {0, 1, 2, 3, 5, -1}) {
    info.setType(type);
    info.setMaximumLength(100);
    EXPECT_EQ(info.getMaximumLength(), 0) << type;
  }
  info.setType(4);
  EXPECT_EQ(info.getMaximumLength(), 100);
}

TEST_F(ColumnInfo, DoesNotCheckTheLength) {
  info.setType(4);
  info.setMaximumLength(-1);
  EXPECT_EQ(info.getMaximumLength(), -1);
}

TEST_F(ColumnInfo, ValidValuesOutOfRangeAreEmpty) {
  EXPECT_TRUE(info.addValidValue(kv("A"), &error));
  EXPECT_EQ(info.getValidValue(-1).length(), 0);
  EXPECT_EQ(info.getValidValue(info.getValidValues()).length(), 0);
  EXPECT_EQ(str(info.getValidValue(0)), "A");
}

TEST_F(ColumnInfo, KeepsDuplicateValidValues) {
  EXPECT_TRUE(info.addValidValue(kv("A"), &error));
  EXPECT_TRUE(info.addValidValue(kv("A"), &error));
  EXPECT_EQ(info.getValidValues(), 2);
  EXPECT_EQ(str(error), "untouched");
}

TEST_F(ColumnInfo, TakesAnyDefaultWithoutValidValues) {
  EXPECT_TRUE(info.setDefault(kv("X"), &error));
  EXPECT_EQ(str(info.getDefault()), "X");
}

TEST_F(ColumnInfo, TakesAValidDefault) {
  info.addValidValue(kv("A"), &error);
  info.addValidValue(kv("B"), &error);
  EXPECT_TRUE(info.setDefault(kv("B"), &error));
  EXPECT_EQ(str(info.getDefault()), "B");
}

TEST_F(ColumnInfo, RefusesAnotherDefaultSilently) {
  info.addValidValue(kv("A"), &error);
  info.addValidValue(kv("B"), &error);
  info.setDefault(kv("A"), &error);
  EXPECT_FALSE(info.setDefault(kv("X"), &error));
  EXPECT_FALSE(info.setDefault(kv("b"), &error));
  EXPECT_EQ(str(info.getDefault()), "A");
  EXPECT_EQ(str(error), "untouched");
  EXPECT_EQ(model.error(), "");
}

TEST_F(ColumnInfo, AValidValueAddedLaterDoesNotQuestionTheDefault) {
  info.setDefault(kv("X"), &error);
  EXPECT_TRUE(info.addValidValue(kv("A"), &error));
  EXPECT_EQ(str(info.getDefault()), "X");
}

TEST_F(ColumnInfo, StoresAnyXPathWithoutValidation) {
  for (const char* xpath : {"/a", "nonsense", ""}) {
    EXPECT_TRUE(info.setXPath(kv(xpath), false, &error)) << xpath;
    EXPECT_EQ(str(info.getXPath()), xpath);
  }
  EXPECT_EQ(str(error), "untouched");
}

TEST(ColumnInfoWithoutRoot, RefusesEveryXPathThatIsToBeValidated) {
  XDMMainImpl main(0);
  XDMColumnInfo info;
  info.setXDM(&main);
  KvbString error;
  EXPECT_TRUE(info.setXPath(kv("/old"), false, &error));
  EXPECT_FALSE(info.setXPath(kv("/a"), true, &error));
  EXPECT_EQ(str(error), catalogue(1425));
  EXPECT_EQ(str(info.getXPath()), "/old");
}

/**
 * The tree below, whose elements carry no attributes but b:
 *   a
 *     b (attribute c)
 *       d
 *     b
 *       e
 *     p:x
 *       y
 *     n, in a default namespace
 */
class ValidatedXPath : public ColumnInfo {
 protected:
  ValidatedXPath() {
    XDMElemImpl* root = model.root;
    XDMElemImpl* first = addChild(root, "b");
    addAttribute(first, "c");
    addChild(first, "d");
    // Made under a prefix that it does not keep, so that it becomes a second b.
    addChild(addChild(root, "b", "other"), "e");
    XDMElemImpl* x = addChild(root, "x", "p");
    x->setNamespace(root->createNamespace(kv("p"), kv("urn:p")));
    addChild(x, "y");
    addChild(root, "n")->setNamespace(root->createNamespace(kv(""), kv("urn:n")));
    info.setXPath(kv("/old"), false, &error);
  }
};

TEST_F(ValidatedXPath, IsStoredAsGivenWhenItLeadsThroughTheTree) {
  for (const char* xpath : {"/a", "/a/", "/a/b", "/a/b/d", "/a/p:x", "/a/p:x/y", "/a/n", "/a/b[2]", "/a[1]/b[2]/d[3]",
                            "/a/b[@c='x'][1]", "xa/b"}) {
    EXPECT_TRUE(info.setXPath(kv(xpath), true, &error)) << xpath << ": " << str(error);
    EXPECT_EQ(str(info.getXPath()), xpath);
    EXPECT_EQ(str(error), "untouched");
  }
}

TEST_F(ValidatedXPath, AcceptsALastAttributeStepWithoutLookingForIt) {
  for (const char* xpath : {"/a/b/@c", "/a/b/@none", "/a/@none", "/a/b/d/@none", "/@none", "/a/@none[1]"}) {
    EXPECT_TRUE(info.setXPath(kv(xpath), true, &error)) << xpath << ": " << str(error);
    EXPECT_EQ(str(info.getXPath()), xpath);
  }
}

struct Refused {
  const char* xpath;
  const char* step;
};

TEST_F(ValidatedXPath, NamesTheStepThatWasNotFound) {
  for (const Refused& refused : {
           Refused{"/b", "b"},          // another root
           Refused{"/A", "A"},          // case matters
           Refused{"/a/B", "B"},        // here too
           Refused{"/a/z", "z"},        // no such child
           Refused{"/a/z/d", "z"},      // the first step that fails counts
           Refused{"/a/b/d/f", "f"},    // below a leaf
           Refused{"/a/b/e", "e"},      // only the first b is looked into
           Refused{"/a/x", "x"},        // the prefix belongs to the name
           Refused{"/a/q:x", "q:x"},    // and so it is not this one
           Refused{"/a/n:n", "n:n"},    // a default namespace has none
           Refused{"/a/z[1]", "z"},     // without its predicate
           Refused{"/a/[b]", "[b]"},    // a predicate alone keeps its text
           Refused{"/a/b[c/d]", "d]"},  // a step ends at any slash
           Refused{"/a/@c/b", "@c"},    // an attribute step that is not the last
           Refused{"/a/b/@c/d", "@c"},  // though it names one that exists
           Refused{"/a//b", ""},        // an empty step
           Refused{"a/b", ""},          // the first character is skipped
           Refused{"/", ""},            // no step at all
           Refused{"", ""},             // nor here
       }) {
    EXPECT_FALSE(info.setXPath(kv(refused.xpath), true, &error)) << refused.xpath;
    EXPECT_EQ(str(error), catalogue(1445, refused.step)) << refused.xpath;
    EXPECT_EQ(str(info.getXPath()), "/old");
  }
  EXPECT_EQ(model.error(), "");
}

TEST_F(ColumnInfoInADocument, WritesTheNamePart) {
  KvDom dom;
  ASSERT_TRUE(dom.startNewDocument(kv("top")));
  KvDomNode top = dom.getRoot();
  info.setLocalName(kv("name"));
  KvDomNode node = info.toDOM(top, kv("thing"));
  EXPECT_EQ(str(node.getName()), "thing");
  EXPECT_EQ(str(node.getAttributeValue(kv("name"))), "name");
  EXPECT_TRUE(node.getAttributeValue(kv("prefix")).isNull());
  EXPECT_TRUE(node.getAttributeValue(kv("uri")).isNull());
  EXPECT_EQ(model.error(), "../../src/kvxdmcinfo:551 is not implemented.");
}

TEST_F(ColumnInfoInADocument, WritesAnEmptyPrefixOfANamespace) {
  KvDom dom;
  ASSERT_TRUE(dom.startNewDocument(kv("top")));
  KvDomNode top = dom.getRoot();
  XDMNSImpl declaration(model.root, kv(""), kv("urn:u"));
  info.setLocalName(kv("name"));
  info.setNamespace(&declaration);
  KvDomNode node = info.toDOM(top, kv("thing"));
  EXPECT_FALSE(node.getAttributeValue(kv("prefix")).isNull());
  EXPECT_EQ(str(node.getAttributeValue(kv("uri"))), "urn:u");
}

struct Unwritable {
  const char* name;
  const char* prefix;
  const char* uri;
  int message;
};

TEST_F(ColumnInfoInADocument, RemovesANodeWhoseNamePartCannotBeWritten) {
  for (const Unwritable& bad : {Unwritable{"na\1me", "p", "u", 1435}, Unwritable{"name", "\1", "u", 1438},
                                Unwritable{"name", "p", "\1", 1437}}) {
    KvDom dom;
    ASSERT_TRUE(dom.startNewDocument(kv("top")));
    KvDomNode top = dom.getRoot();
    XDMNSImpl declaration(model.root, kv(bad.prefix), kv(bad.uri));
    info.setLocalName(kv(bad.name));
    info.setNamespace(&declaration);
    EXPECT_TRUE(info.toDOM(top, kv("thing")).null());
    EXPECT_EQ(model.error(), catalogue(bad.message, "thing", bad.name));
    EXPECT_TRUE(top.getFirstChild(false).null());
  }
}

TEST_F(ColumnInfoInADocument, ReportsANodeThatCannotBeAdded) {
  KvDom dom;
  ASSERT_TRUE(dom.startNewDocument(kv("top")));
  KvDomNode top = dom.getRoot();
  info.setLocalName(kv("name"));
  EXPECT_TRUE(info.toDOM(top, kv("not a name")).null());
  EXPECT_EQ(model.error(), catalogue(1435, "not a name", "name"));
}

TEST_F(ColumnInfoInADocument, ReadsNameAndPrefix) {
  KvDom dom;
  ASSERT_TRUE(dom.loadXML(kv("<thing name='n' prefix='p'/>")));
  KvDomNode node = dom.getRoot();
  KvbString prefix, localName;
  EXPECT_TRUE(info.fromDOMQName(node, &prefix, &localName));
  EXPECT_EQ(str(prefix), "p");
  EXPECT_EQ(str(localName), "n");
}

TEST_F(ColumnInfoInADocument, ReadsAMissingPrefixAsNullAndAnEmptyOneAsEmpty) {
  KvbString prefix, localName;
  KvDom without, empty;
  ASSERT_TRUE(without.loadXML(kv("<thing name='n'/>")) && empty.loadXML(kv("<thing name='n' prefix=''/>")));
  KvDomNode node = without.getRoot();
  EXPECT_TRUE(info.fromDOMQName(node, &prefix, &localName));
  EXPECT_TRUE(prefix.isNull());
  node = empty.getRoot();
  EXPECT_TRUE(info.fromDOMQName(node, &prefix, &localName));
  EXPECT_FALSE(prefix.isNull());
}

TEST_F(ColumnInfoInADocument, RequiresAName) {
  for (const char* xml : {"<thing/>", "<thing name=''/>"}) {
    KvDom dom;
    ASSERT_TRUE(dom.loadXML(kv(xml)));
    KvDomNode node = dom.getRoot();
    KvbString prefix, localName;
    EXPECT_FALSE(info.fromDOMQName(node, &prefix, &localName));
    EXPECT_EQ(model.error(), catalogue(1439, "name", "thing"));
  }
}

TEST_F(ColumnInfoInADocument, ReadsItsOwnNameOnlyWhenItHasNone) {
  KvDom dom;
  ASSERT_TRUE(dom.loadXML(kv("<thing name='n' prefix='p'/>")));
  KvDomNode node = dom.getRoot();
  EXPECT_TRUE(info.fromDOM(node));
  EXPECT_EQ(str(info.getLocalName()), "n");
  info.setLocalName(kv("kept"));
  EXPECT_TRUE(info.fromDOM(node));
  EXPECT_EQ(str(info.getLocalName()), "kept");
  EXPECT_EQ(model.error(), "../../src/kvxdmcinfo:84 is not implemented.");
}

TEST_F(ColumnInfoInADocument, WithoutANameToReadFails) {
  KvDom dom;
  ASSERT_TRUE(dom.loadXML(kv("<thing/>")));
  KvDomNode node = dom.getRoot();
  EXPECT_FALSE(info.fromDOM(node));
}

}  // namespace

// Tests the writers of the XDM document and saveToFile and saveToXML.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "model.h"
#include "temporary.h"

namespace {

const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xdm version=\"1.0\">\n";
const std::string tail = "</xdm>\n";
const char* const notImplemented = "../../src/kvxdmcinfo:551 is not implemented.";

// An order that shows every change: names, prefixes and children stand against the alphabet.
const std::string everything = head + R"(  <element name="library" prefix="l" uri="urn:l" occurs="1">
    <namespace prefix="z" uri="urn:z"/>
    <namespace prefix="l" uri="urn:l"/>
    <namespace prefix="" uri="urn:d?a=1&amp;b=&quot;2&quot;"/>
    <attribute name="version"/>
    <attribute name="lang" prefix="z" uri="urn:z"/>
    <attribute name="base" prefix="" uri="urn:d?a=1&amp;b=&quot;2&quot;"/>
    <attribute name="lang"/>
    <element name="zebra" occurs="2"/>
    <element name="book" prefix="l" uri="urn:other" occurs="-1" decides="true">
      <namespace prefix="l" uri="urn:other"/>
      <attribute name="id" prefix="l" uri="urn:other"/>
      <element name="title" prefix="" uri="urn:d?a=1&amp;b=&quot;2&quot;" occurs="0"/>
      <element name="author" prefix="l" uri="urn:other" occurs="2147483647">
        <element name="名前" occurs="1"/>
      </element>
      <element name="abstract" prefix="z" uri="urn:z" occurs="-2147483648"/>
    </element>
    <element name="apple" occurs="1"/>
    <element name="book" occurs="1"/>
  </element>
)" + tail;

std::string saved(XDMMain& main) {
  KvbString xml, error = kv("untouched");
  EXPECT_TRUE(main.saveToXML(&xml, &error)) << str(error);
  EXPECT_EQ(str(error), "untouched");
  return str(xml);
}

/** Loads `xml` into a main object whose tree stays behind, as a host would. */
std::unique_ptr<XDMMainImpl> loaded(const std::string& xml) {
  auto main = std::make_unique<XDMMainImpl>(0);
  KvbString error;
  EXPECT_TRUE(main->loadFromXML(kv(xml), &error)) << str(error);
  return main;
}

class Save : public ::testing::Test {
 protected:
  /** The text of a failure to save the model as XML. */
  std::string failure() {
    KvbString xml = kv("untouched"), error;
    EXPECT_FALSE(model.main.saveToXML(&xml, &error));
    EXPECT_EQ(str(xml), "untouched");
    EXPECT_EQ(str(error), model.error());
    return str(error);
  }

  Model model;
  XDMElemImpl* root = model.root;
};

TEST_F(Save, WritesARootAlone) { EXPECT_EQ(saved(model.main), head + "  <element name=\"a\" occurs=\"1\"/>\n" + tail); }

TEST_F(Save, WritesNamespacesThenAttributesThenChildren) {
  auto main = loaded(R"(<xdm version="1"><element name="a"><element name="b" occurs="3"/><attribute name="id"/>
      <namespace uri="urn:default"/></element></xdm>)");
  EXPECT_EQ(saved(*main), head + R"(  <element name="a" occurs="1">
    <namespace prefix="" uri="urn:default"/>
    <attribute name="id"/>
    <element name="b" occurs="3"/>
  </element>
)" + tail);
}

TEST_F(Save, WritesPrefixAndUriOfNodesWithANamespace) {
  XDMNSImpl* p = root->createNamespace(kv("p"), kv("urn:p"));
  root->setNamespace(p);
  addAttribute(root, "id", p);
  EXPECT_EQ(saved(model.main), head + R"(  <element name="a" prefix="p" uri="urn:p" occurs="1">
    <namespace prefix="p" uri="urn:p"/>
    <attribute name="id" prefix="p" uri="urn:p"/>
  </element>
)" + tail);
}

TEST_F(Save, WritesAnEmptyPrefixOfANodeInADefaultNamespace) {
  root->setNamespace(root->createNamespace(KvbString(), kv("urn:d")));
  EXPECT_EQ(saved(model.main), head + R"(  <element name="a" prefix="" uri="urn:d" occurs="1">
    <namespace prefix="" uri="urn:d"/>
  </element>
)" + tail);
}

TEST_F(Save, MarksTheElementThatDecidesTheRow) {
  addChild(root, "b")->setDecidesRow(true);
  EXPECT_EQ(saved(model.main), head + R"(  <element name="a" occurs="1">
    <element name="b" occurs="1" decides="true"/>
  </element>
)" + tail);
}

TEST_F(Save, LeavesTheModelAsItWas) {
  addChild(addChild(root, "b"), "c");
  std::string first = saved(model.main);
  EXPECT_EQ(saved(model.main), first);
}

TEST_F(Save, LeavesColumnsAndTheirSettingsOut) {
  XDMElemImpl* child = addChild(root, "b");
  std::string before = saved(model.main);
  KvbString error;
  XDMColumn* column = child->selectAsColumn(kv("name"), true);
  column->setType(2);
  column->setFormat(kv("F"));
  child->columnInfo().addValidValue(kv("v"), &error);
  child->columnInfo().setMaximumLength(5);
  EXPECT_EQ(saved(model.main), before);
}

TEST_F(Save, LeavesTheNotImplementedTextInTheErrorMessage) {
  saved(model.main);
  EXPECT_EQ(model.error(), notImplemented);
}

TEST_F(Save, OfAnEmptyModelFailsAndWritesNothing) {
  XDMMainImpl empty(0);
  empty.setErrorMessage(kv("before"));
  TemporaryFolder folder;
  KvbString xml = kv("untouched"), error;
  EXPECT_FALSE(empty.saveToXML(&xml, &error));
  EXPECT_EQ(str(error), catalogue(1423));
  EXPECT_EQ(str(xml), "untouched");
  error = kv("");
  EXPECT_FALSE(empty.saveToFile(kv(folder.file("model.xdm")), &error));
  EXPECT_EQ(str(error), catalogue(1423));
  EXPECT_FALSE(std::filesystem::exists(folder.file("model.xdm")));
  EXPECT_EQ(str(empty.errorMessage()), "before");
}

TEST_F(Save, WritesTheSameTextIntoAFile) {
  TemporaryFolder folder;
  KvbString error = kv("untouched");
  addChild(root, "b");
  EXPECT_TRUE(model.main.saveToFile(kv(folder.file("model.xdm")), &error));
  EXPECT_EQ(str(error), "untouched");
  EXPECT_EQ(readFile(folder.file("model.xdm")), saved(model.main));
}

TEST_F(Save, IntoAMissingFolderNamesThePath) {
  TemporaryFolder folder;
  const std::string path = folder.file("missing/model.xdm");
  KvbString error;
  EXPECT_FALSE(model.main.saveToFile(kv(path), &error));
  EXPECT_EQ(str(error), catalogue(463, path.c_str()));
  EXPECT_EQ(model.error(), notImplemented);
}

TEST_F(Save, ThatFailsLeavesAnOldFileAlone) {
  TemporaryFolder folder;
  const std::string path = folder.write("model.xdm", "old");
  KvbString error;
  addChild(root, "b\1");
  EXPECT_FALSE(model.main.saveToFile(kv(path), &error));
  EXPECT_EQ(str(error), catalogue(1435, "element", "b\1"));
  EXPECT_EQ(readFile(path), "old");
}

TEST_F(Save, RefusesANameThatXmlCannotHold) {
  addChild(addChild(root, "b"), "\1");
  EXPECT_EQ(failure(), catalogue(1435, "element", "\1"));
}

TEST_F(Save, RefusesANameThatIsNotUtf8) {
  addChild(root, "caf\xe9");
  EXPECT_EQ(failure(), catalogue(1435, "element", "caf\xe9"));
}

TEST_F(Save, RefusesAPrefixOfAnElementThatXmlCannotHold) {
  root->setNamespace(root->createNamespace(kv("\1"), kv("u")));
  EXPECT_EQ(failure(), catalogue(1438, "element", "a"));
}

TEST_F(Save, RefusesAUriOfAnElementThatXmlCannotHold) {
  root->setNamespace(root->createNamespace(kv("p"), kv("\1")));
  EXPECT_EQ(failure(), catalogue(1437, "element", "a"));
}

TEST_F(Save, RefusesAnAttributeNameThatXmlCannotHold) {
  addAttribute(root, "\1");
  EXPECT_EQ(failure(), catalogue(1435, "attribute", "\1"));
}

// The declarations stand on a child, so that the attribute is the first to be written.
TEST_F(Save, RefusesAPrefixOfAnAttributeThatXmlCannotHold) {
  addAttribute(root, "id", addChild(root, "b")->createNamespace(kv("\1"), kv("u")));
  EXPECT_EQ(failure(), catalogue(1438, "attribute", "id"));
}

TEST_F(Save, RefusesAUriOfAnAttributeThatXmlCannotHold) {
  addAttribute(root, "id", addChild(root, "b")->createNamespace(kv("p"), kv("\1")));
  EXPECT_EQ(failure(), catalogue(1437, "attribute", "id"));
}

TEST_F(Save, RefusesADeclaredPrefixThatXmlCannotHold) {
  root->createNamespace(kv("\1"), kv("u"));
  EXPECT_EQ(failure(), catalogue(1438, "namespace", "\1"));
}

TEST_F(Save, RefusesADeclaredUriThatXmlCannotHold) {
  root->createNamespace(kv("p"), kv("\1"));
  EXPECT_EQ(failure(), catalogue(1438, "namespace", "\1"));
}

TEST_F(Save, AFailedDeclarationStaysInTheDocument) {
  KvDom dom;
  ASSERT_TRUE(dom.startNewDocument(kv("top")));
  KvDomNode top = dom.getRoot();
  EXPECT_FALSE(root->createNamespace(kv("p"), kv("\1"))->toDOM(top));
  EXPECT_EQ(str(top.getFirstChild(false).getName()), "namespace");
}

TEST_F(Save, AFailedAttributeLeavesTheDocument) {
  KvDom dom;
  ASSERT_TRUE(dom.startNewDocument(kv("top")));
  KvDomNode top = dom.getRoot();
  EXPECT_FALSE(addAttribute(root, "\1")->toDOM(top));
  EXPECT_TRUE(top.getFirstChild(false).null());
}

TEST(SaveLoadSave, GivesTheSameBytes) {
  auto first = loaded(everything);
  EXPECT_EQ(saved(*first), everything);
  auto second = loaded(saved(*first));
  EXPECT_EQ(saved(*second), everything);
}

TEST(SaveLoadSave, ThroughAFileGivesTheSameBytes) {
  TemporaryFolder folder;
  const std::string first = folder.write("first.xdm", everything), second = folder.file("second.xdm");
  XDMMainImpl main(0);
  KvbString error;
  EXPECT_TRUE(main.loadFromFile(kv(first), &error)) << str(error);
  EXPECT_TRUE(main.saveToFile(kv(second), &error)) << str(error);
  EXPECT_EQ(readFile(second), everything);
}

TEST(SaveLoadSave, LeavesColumnsBehindAndPropertiesAtTheirStart) {
  auto first = loaded(everything);
  XDMNode* book = first->getRootNode()->getChild()->getNextSibling();
  book->selectAsColumn(kv("book"), true)->setType(2);
  static_cast<XDMElemImpl*>(static_cast<XDMElement*>(book))->columnInfo().setType(5);
  auto second = loaded(saved(*first));
  EXPECT_EQ(saved(*second), everything);
  EXPECT_EQ(second->getSelectedColumns(), 0);
  EXPECT_EQ(second->getRootNode()->getChild()->getNextSibling()->getType(), 4);
}

TEST(SaveLoadSave, KeepsEveryCharacterOfANameThatXmlCanHold) {
  Model model("a");
  addChild(model.root, "<&>'\" \t\n\r ü€𝄞");
  const std::string xml = saved(model.main);
  auto main = loaded(xml);
  EXPECT_EQ(str(main->getRootNode()->getChild()->getLocalName()), "<&>'\" \t\n\r ü€𝄞");
  EXPECT_EQ(saved(*main), xml);
}

}  // namespace

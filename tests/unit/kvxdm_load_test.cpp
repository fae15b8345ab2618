// Tests the readers of the XDM document and loadFromFile and loadFromXML.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model.h"
#include "temporary.h"

namespace {

using ::testing::ElementsAre;

const char* const notImplemented = "../../src/kvxdmcinfo:84 is not implemented.";

std::string document(const std::string& content) { return "<xdm version=\"1.0\">" + content + "</xdm>"; }

class Load : public ::testing::Test {
 protected:
  ~Load() override { delete main.root(); }

  void load(const std::string& xml) {
    KvbString error = kv("untouched");
    EXPECT_TRUE(main.loadFromXML(kv(xml), &error)) << xml << ": " << str(error);
    EXPECT_EQ(str(error), "untouched");
  }

  /** Loads the root element `xml`. */
  void loadElement(const std::string& xml) { load(document(xml)); }

  /** The text of a failure of the format, which goes to both places. */
  std::string failure(const std::string& xml) {
    KvbString error;
    EXPECT_FALSE(main.loadFromXML(kv(xml), &error)) << xml;
    EXPECT_EQ(str(error), str(main.errorMessage()));
    return str(error);
  }

  XDMElemImpl* root() { return main.root(); }
  XDMElemImpl* child(int index = 0) {
    XDMElemImpl* child = root()->firstChild();
    while (index-- > 0) child = child->nextSibling();
    return child;
  }

  XDMMainImpl main{0};
};

using LoadedNamespaces = Load;
using LoadedOrder = Load;
using LoadFailure = Load;

TEST_F(Load, MakesTheTree) {
  loadElement(R"(<element name="a"><attribute name="id"/><element name="b"><element name="c"/></element></element>)");
  EXPECT_EQ(str(root()->getLocalName()), "a");
  EXPECT_EQ(str(root()->firstAttribute()->getXPath()), "/a/@id");
  EXPECT_EQ(str(child()->firstChild()->getXPath()), "/a/b/c");
  EXPECT_EQ(child()->getMain(), &main);
}

TEST_F(Load, LeavesTheNotImplementedTextInTheErrorMessage) {
  loadElement(R"(<element name="a"/>)");
  EXPECT_EQ(str(main.errorMessage()), notImplemented);
}

TEST_F(Load, SelectsNothing) {
  loadElement(R"(<element name="a"/>)");
  EXPECT_EQ(main.getSelectedColumns(), 0);
}

TEST_F(Load, ReadsAFile) {
  TemporaryFolder folder;
  KvbString error = kv("untouched");
  std::string path = folder.write("model.xdm", document(R"(<element name="a"/>)"));
  EXPECT_TRUE(main.loadFromFile(kv(path), &error));
  EXPECT_EQ(str(error), "untouched");
  EXPECT_EQ(str(root()->getXPath()), "/a");
}

TEST_F(Load, AcceptsVersionsUpToOne) {
  for (const char* version : {"1.0", "1", "0.9", "0", "1."}) {
    XDMMainImpl fresh(0);
    KvbString error;
    std::string xml = std::string("<xdm version='") + version + "'><element name='a'/></xdm>";
    EXPECT_TRUE(fresh.loadFromXML(kv(xml), &error)) << version;
    delete fresh.root();
  }
}

TEST_F(Load, IgnoresWhatItDoesNotKnow) {
  load(R"(<xdm version="1.0" other="x">text
      <element name="a" other="x" uri="urn:never">text<other/><attribute name="id"><element name="no"/></attribute>
        <xdm/><Element name="no"/><Attribute name="no"/><Namespace prefix="no" uri="no"/>
        <element name="b"/><!-- comment --></element></xdm>)");
  EXPECT_THAT(childNames(root()), ElementsAre("b"));
  EXPECT_EQ(root()->firstAttribute()->getNextSibling(), nullptr);
  EXPECT_EQ(root()->getNamespaces(), 0);
  EXPECT_EQ(root()->getNamespace(), nullptr);
}

struct Occurs {
  const char* text;
  int count;
};

TEST_F(Load, ReadsOccurs) {
  for (const Occurs& sample :
       {Occurs{"3", 3}, Occurs{"0", 0}, Occurs{"-1", -1}, Occurs{"+2", 2}, Occurs{" 5 ", 5}, Occurs{"007", 7},
        Occurs{"2147483647", 2147483647}, Occurs{"-2147483648", -2147483647 - 1}, Occurs{"", 1}}) {
    XDMMainImpl fresh(0);
    KvbString error;
    std::string xml = document(std::string("<element name='a' occurs='") + sample.text + "'/>");
    EXPECT_TRUE(fresh.loadFromXML(kv(xml), &error)) << str(error);
    EXPECT_EQ(fresh.root()->getMaxOccurrences(), sample.count) << sample.text;
    delete fresh.root();
  }
}

TEST_F(Load, WithoutOccursKeepsOne) {
  loadElement(R"(<element name="a"/>)");
  EXPECT_EQ(root()->getMaxOccurrences(), 1);
}

TEST_F(Load, TakesOnlyTheWordTrueForDecides) {
  loadElement(R"(<element name="a"><element name="b" decides="TRUE"/><element name="c" decides="1"/>
      <element name="d" decides=""/><element name="e" decides=" true"/><element name="f" decides="false"/></element>)");
  EXPECT_EQ(main.decidingElement(), nullptr);
}

TEST_F(Load, RecordsTheElementThatDecidesTheRow) {
  loadElement(R"(<element name="a"><element name="b" decides="true"/><element name="c"/></element>)");
  EXPECT_TRUE(child()->getDecidesRow());
  EXPECT_EQ(main.decidingElement(), child());
}

TEST_F(Load, TheLastElementThatDecidesTheRowWins) {
  loadElement(R"(<element name="a" decides="true"><element name="b" decides="true"><element name="c" decides="true"/>
      </element><element name="d"/></element>)");
  EXPECT_FALSE(root()->getDecidesRow());
  EXPECT_FALSE(child()->getDecidesRow());
  EXPECT_EQ(main.decidingElement(), child()->firstChild());
}

TEST_F(LoadedOrder, OfChildrenAttributesAndNamespacesIsKept) {
  loadElement(R"(<element name="a"><namespace prefix="z" uri="1"/><namespace prefix="b" uri="2"/>
      <attribute name="y"/><attribute name="x"/><element name="n"/><element name="m"/><element name="l"/></element>)");
  EXPECT_THAT(childNames(root()), ElementsAre("n", "m", "l"));
  EXPECT_EQ(str(root()->firstNamespace()->getPrefix()), "z");
  EXPECT_EQ(str(root()->firstNamespace()->getNextSibling()->getPrefix()), "b");
  EXPECT_EQ(str(root()->firstAttribute()->getLocalName()), "y");
  EXPECT_EQ(str(root()->firstAttribute()->getNextSibling()->getLocalName()), "x");
}

TEST_F(LoadedOrder, SiblingsOfOneNameMergeIntoTheFirst) {
  loadElement(R"(<element name="a"><element name="b" occurs="2"><element name="x"/></element><element name="c"/>
      <element name="b" occurs="3"><attribute name="id"/><element name="y"/></element></element>)");
  EXPECT_THAT(childNames(root()), ElementsAre("b", "c"));
  EXPECT_THAT(childNames(child()), ElementsAre("x", "y"));
  EXPECT_EQ(child()->getMaxOccurrences(), 3);
  EXPECT_NE(child()->firstAttribute(), nullptr);
}

TEST_F(LoadedOrder, SiblingsOfOneNameAndPrefixMergeToo) {
  loadElement(R"(<element name="a"><namespace prefix="p" uri="urn:p"/><element name="b" prefix="p"/>
      <element name="b"/><element name="b" prefix="p"><element name="c"/></element></element>)");
  EXPECT_THAT(childNames(root()), ElementsAre("b", "b"));
  EXPECT_THAT(childNames(child(0)), ElementsAre("c"));
  EXPECT_EQ(child(0)->getNamespace(), root()->firstNamespace());
  EXPECT_EQ(child(1)->getNamespace(), nullptr);
}

TEST_F(LoadedOrder, AttributesOfOneNameMergeByUri) {
  loadElement(R"(<element name="a"><namespace prefix="p" uri="u"/><namespace prefix="q" uri="u"/>
      <attribute name="id"/><attribute name="id" prefix="p"/><attribute name="id" prefix="q"/><attribute name="id"/>
      </element>)");
  XDMNode* second = root()->firstAttribute()->getNextSibling();
  EXPECT_EQ(str(second->getXPath()), "/a/@p:id");
  EXPECT_EQ(second->getNextSibling(), nullptr);
}

TEST_F(LoadedNamespaces, AreDeclaredBeforeAnythingElseIsRead) {
  loadElement(R"(<element name="a" prefix="p"><attribute name="id" prefix="p"/><element name="b" prefix="p"/>
      <namespace prefix="p" uri="urn:p"/></element>)");
  XDMNamespace* p = root()->firstNamespace();
  EXPECT_EQ(root()->getNamespace(), p);
  EXPECT_EQ(root()->firstAttribute()->getNamespace(), p);
  EXPECT_EQ(str(root()->firstAttribute()->getXPath()), "/p:a/@p:id");
  EXPECT_EQ(child()->getNamespace(), p);
}

TEST_F(LoadedNamespaces, BindAnElementToItsOwnDeclarationFirst) {
  loadElement(R"(<element name="a"><namespace prefix="p" uri="outer"/>
      <element name="b" prefix="p"><namespace prefix="p" uri="inner"/><attribute name="id" prefix="p"/></element>
      </element>)");
  EXPECT_EQ(str(child()->getNamespace()->getURI()), "inner");
  EXPECT_EQ(str(child()->firstAttribute()->getNamespace()->getURI()), "inner");
}

TEST_F(LoadedNamespaces, ReachFromTheRootToAGrandchild) {
  loadElement(R"(<element name="a"><namespace prefix="p" uri="u"/>
      <element name="b"><element name="c" prefix="p"/></element></element>)");
  EXPECT_EQ(child()->firstChild()->getNamespace(), root()->firstNamespace());
  EXPECT_EQ(child()->getNamespace(), nullptr);
}

TEST_F(LoadedNamespaces, WithoutAPrefixAttributeAreNotLookedUp) {
  loadElement(R"(<element name="a"><namespace prefix="" uri="u"/><attribute name="id"/><element name="b"/></element>)");
  EXPECT_EQ(root()->getNamespace(), nullptr);
  EXPECT_EQ(root()->firstAttribute()->getNamespace(), nullptr);
  EXPECT_EQ(child()->getNamespace(), nullptr);
}

TEST_F(LoadedNamespaces, WithAnEmptyPrefixAttributeAreTheDefaultOnes) {
  loadElement(R"(<element name="a" prefix=""><namespace uri="u"/><attribute name="id" prefix=""/>
      <element name="b" prefix=""/></element>)");
  XDMNamespace* declaration = root()->firstNamespace();
  EXPECT_EQ(root()->getNamespace(), declaration);
  EXPECT_EQ(root()->firstAttribute()->getNamespace(), declaration);
  EXPECT_EQ(str(root()->firstAttribute()->getXPath()), "/a/@id");
  EXPECT_EQ(child()->getNamespace(), declaration);
}

TEST_F(LoadedNamespaces, ThatAreNotDeclaredBindNothing) {
  loadElement(R"(<element name="a" prefix="x"><attribute name="id" prefix="y"/>
      <element name="b" prefix="z"/></element>)");
  EXPECT_EQ(root()->getNamespace(), nullptr);
  EXPECT_EQ(root()->firstAttribute()->getNamespace(), nullptr);
  EXPECT_EQ(child()->getNamespace(), nullptr);
  EXPECT_EQ(str(root()->firstAttribute()->getXPath()), "/x:a/@id");
  EXPECT_EQ(str(child()->getXPath()), "/x:a/z:b");
}

TEST_F(LoadedNamespaces, MayLackPrefixAndUri) {
  loadElement(R"(<element name="a"><namespace/></element>)");
  EXPECT_EQ(root()->getNamespaces(), 1);
  EXPECT_EQ(root()->firstNamespace()->getPrefix().length(), 0);
  EXPECT_EQ(root()->firstNamespace()->getURI().length(), 0);
}

TEST_F(LoadedNamespaces, AreNotReadFromTheUriOfANode) {
  loadElement(R"(<element name="a" prefix="p" uri="urn:wrong"><namespace prefix="p" uri="urn:right"/></element>)");
  EXPECT_EQ(str(root()->getNamespace()->getURI()), "urn:right");
}

struct Rejected {
  std::string xml;
  std::string text;
};

TEST_F(LoadFailure, OfTheDocumentIsReportedInBothPlacesAndMakesNoRoot) {
  for (const Rejected& rejected : std::vector<Rejected>{
           {"<other version='1.0'><element name='a'/></other>", catalogue(1425)},
           {"<XDM version='1.0'><element name='a'/></XDM>", catalogue(1425)},
           {"<p:xdm xmlns:p='u' version='1.0'><element name='a'/></p:xdm>", catalogue(1425)},
           {"<other/>", catalogue(1425)},
           {"<xdm><element name='a'/></xdm>", catalogue(1424, "")},
           {"<xdm version=''><element name='a'/></xdm>", catalogue(1424, "")},
           {"<xdm version='1.1'><element name='a'/></xdm>", catalogue(1424, "1.1")},
           {"<xdm version='2'><element name='a'/></xdm>", catalogue(1424, "2")},
           {"<xdm version='10'><element name='a'/></xdm>", catalogue(1424, "10")},
           {"<xdm version='1.0 '><element name='a'/></xdm>", catalogue(1424, "1.0 ")},
           {"<xdm version='2'/>", catalogue(1424, "2")},
           {document(""), catalogue(1425)},
           {document("text"), catalogue(1425)},
           {document("<attribute name='a'/>"), catalogue(1426, "xdm", "element")},
           {document("<Element name='a'/>"), catalogue(1426, "xdm", "element")},
           {document("<other/><element name='a'/>"), catalogue(1426, "xdm", "element")},
           {document("<element name='a'/><element name='b'/>"), catalogue(1427, "xdm")},
           {document("<element name='a'/><other/>"), catalogue(1427, "xdm")},
           {document("<element/>"), catalogue(1439, "name", "element")},
           {document("<element name=''/>"), catalogue(1439, "name", "element")},
       }) {
    EXPECT_EQ(failure(rejected.xml), rejected.text) << rejected.xml;
    EXPECT_EQ(main.root(), nullptr);
  }
}

TEST_F(LoadFailure, ByAnElementWithoutNameKeepsWhatWasRead) {
  EXPECT_EQ(failure(document("<element name='a'><element name='b'/><element/><element name='c'/></element>")),
            catalogue(1439, "name", "element"));
  EXPECT_THAT(childNames(root()), ElementsAre("b"));
}

TEST_F(LoadFailure, ByAnAttributeWithoutNameKeepsWhatWasRead) {
  EXPECT_EQ(failure(document("<element name='a'><attribute name='x'/><attribute prefix='p'/></element>")),
            catalogue(1439, "name", "attribute"));
  EXPECT_EQ(str(root()->firstAttribute()->getLocalName()), "x");
  EXPECT_EQ(root()->firstAttribute()->getNextSibling(), nullptr);
}

TEST_F(LoadFailure, ByOccursThatIsNoNumberNamesItAndKeepsTheElement) {
  for (const char* occurs : {"x", "1.5", "0x10", "2147483648", "-2147483649", "1 2", " ", "- 1", "unbounded"}) {
    XDMMainImpl fresh(0);
    KvbString error;
    EXPECT_FALSE(fresh.loadFromXML(kv(document(std::string("<element name='a' occurs='") + occurs + "'/>")), &error));
    EXPECT_EQ(str(error), std::string("occurs value '") + occurs + "' is not numeric.");
    EXPECT_EQ(str(fresh.errorMessage()), str(error));
    // Stored before it is known to be wrong.
    EXPECT_EQ(fresh.root()->getMaxOccurrences(), 0) << occurs;
    delete fresh.root();
  }
}

TEST_F(LoadFailure, LeavesARootThatRefusesTheNextLoad) {
  failure(document("<element name='a' occurs='x'/>"));
  KvbString error;
  EXPECT_FALSE(main.loadFromXML(kv(document("<element name='b'/>")), &error));
  EXPECT_EQ(str(error), catalogue(1422));
  EXPECT_EQ(str(root()->getXPath()), "/a");
}

TEST_F(LoadFailure, IntoAPopulatedModelChangesNothing) {
  loadElement("<element name='a'><element name='b'/></element>");
  main.setErrorMessage(kv("before"));
  KvbString error;
  EXPECT_FALSE(main.loadFromXML(kv(document("<element name='c'/>")), &error));
  EXPECT_EQ(str(error), catalogue(1422));
  error = kv("");
  EXPECT_FALSE(main.loadFromFile(kv("/no/such/file"), &error));
  EXPECT_EQ(str(error), catalogue(1422));
  EXPECT_EQ(str(main.errorMessage()), "before");
  EXPECT_THAT(childNames(root()), ElementsAre("b"));
}

TEST_F(LoadFailure, OfAMissingFileNamesThePath) {
  main.setErrorMessage(kv("before"));
  KvbString error;
  EXPECT_FALSE(main.loadFromFile(kv("/no/such/file.xdm"), &error));
  EXPECT_EQ(str(error), catalogue(1428, "/no/such/file.xdm"));
  EXPECT_EQ(str(main.errorMessage()), "before");
}

TEST_F(LoadFailure, OfAFileThatIsNotXmlNamesThePath) {
  TemporaryFolder folder;
  KvbString error;
  for (const char* text : {"", "<xdm>", "not xml", "<xdm version='1.0'><element name='a'></xdm>"}) {
    std::string path = folder.write("model.xdm", text);
    EXPECT_FALSE(main.loadFromFile(kv(path), &error)) << text;
    EXPECT_EQ(str(error), catalogue(1428, path.c_str()));
  }
  std::string path = folder.path().string();
  EXPECT_FALSE(main.loadFromFile(kv(path), &error));
  EXPECT_EQ(str(error), catalogue(1428, path.c_str()));
}

TEST_F(LoadFailure, OfTextThatIsNotXmlHasNoArgument) {
  main.setErrorMessage(kv("before"));
  KvbString error;
  for (const char* text : {"", "<xdm>", "not xml", "<xdm version='1.0'/><xdm/>", "<xdm version=1.0/>"}) {
    EXPECT_FALSE(main.loadFromXML(kv(text), &error)) << text;
    EXPECT_EQ(str(error), catalogue(1429));
  }
  EXPECT_EQ(str(main.errorMessage()), "before");
  EXPECT_EQ(main.root(), nullptr);
}

}  // namespace

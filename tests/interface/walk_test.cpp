// Tests how a host walks and reads a loaded model.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kvxdm/kvxdm.h>

#include <string>
#include <vector>

#include "host_model.h"
#include "library_model.h"

namespace {

using ::testing::ElementsAre;

class Walk : public ::testing::Test {
 protected:
  XDMMainPtr main = loadModel(libraryModel);
  XDMElement* library = main->getRootNode();
  XDMElement* book = library->getChild();
};

void collect(XDMElement* element, std::vector<std::string>* xpaths) {
  xpaths->push_back(str(element->getXPath()));
  for (XDMAttribute* attribute = element->getNextAttribute(nullptr); attribute;
       attribute = element->getNextAttribute(attribute)) {
    xpaths->push_back(str(attribute->getXPath()));
  }
  for (XDMNode* child = element->getChild(); child; child = child->getNextSibling()) {
    collect(static_cast<XDMElement*>(child), xpaths);
  }
}

TEST_F(Walk, MeetsEveryNodeInDocumentOrder) {
  std::vector<std::string> xpaths;
  collect(library, &xpaths);
  EXPECT_THAT(xpaths,
              ElementsAre("/library", "/library/@owner", "/library/@m:lang", "/library/book", "/library/book/@isbn",
                          "/library/book/title", "/library/book/m:price", "/library/address"));
}

TEST_F(Walk, TellsElementsFromAttributes) {
  for (XDMNode* node : {static_cast<XDMNode*>(library), static_cast<XDMNode*>(book), book->getNextSibling()}) {
    EXPECT_EQ(node->nodeType(), 1);
  }
  for (XDMNode* node : {library->getNextAttribute(nullptr), book->getNextAttribute(nullptr)}) {
    EXPECT_EQ(node->nodeType(), 0);
  }
}

TEST_F(Walk, EndsBelowALeafAndAnAttribute) {
  EXPECT_EQ(book->getChild()->getChild(), nullptr);
  EXPECT_EQ(book->getNextAttribute(nullptr)->getChild(), nullptr);
}

TEST_F(Walk, EndsBesideTheRootAndTheLastChild) {
  EXPECT_EQ(library->getNextSibling(), nullptr);
  EXPECT_EQ(book->getNextSibling()->getNextSibling(), nullptr);
}

TEST_F(Walk, OverAttributesFollowsTheirOrder) {
  XDMAttribute* owner = library->getNextAttribute(nullptr);
  XDMAttribute* lang = library->getNextAttribute(owner);
  EXPECT_EQ(str(owner->getLocalName()), "owner");
  EXPECT_EQ(str(lang->getLocalName()), "lang");
  EXPECT_EQ(owner->getNextSibling(), lang);
  EXPECT_EQ(lang->getNextSibling(), nullptr);
  EXPECT_EQ(library->getNextAttribute(lang), nullptr);
}

TEST_F(Walk, FromAnAttributeOfAnotherElementEnds) {
  EXPECT_EQ(book->getNextAttribute(library->getNextAttribute(nullptr)), nullptr);
}

TEST_F(Walk, OverNamespacesFollowsTheirOrder) {
  XDMNamespace* meta = library->getNextNamespace(nullptr);
  XDMNamespace* unused = library->getNextNamespace(meta);
  EXPECT_EQ(library->getNamespaces(), 2);
  EXPECT_EQ(str(meta->getURI()), "urn:meta");
  EXPECT_EQ(unused->getPrefix().length(), 0);
  EXPECT_EQ(meta->getNextSibling(), unused);
  EXPECT_EQ(unused->getNextSibling(), nullptr);
  EXPECT_EQ(library->getNextNamespace(unused), nullptr);
  EXPECT_EQ(meta->getParent(), library);
}

TEST_F(Walk, OfAnElementWithoutDeclarationsIsEmpty) {
  EXPECT_EQ(book->getNamespaces(), 0);
  EXPECT_EQ(book->getNextNamespace(nullptr), nullptr);
  EXPECT_EQ(book->getNextNamespace(library->getNextNamespace(nullptr)), nullptr);
}

TEST_F(Walk, LeadsBackUp) {
  XDMAttribute* isbn = book->getNextAttribute(nullptr);
  EXPECT_EQ(isbn->getParent(), book);
  EXPECT_EQ(book->getParent(), library);
  EXPECT_EQ(library->getParent(), nullptr);
  EXPECT_EQ(isbn->getMain(), main.get());
  EXPECT_EQ(library->getMain(), main.get());
}

TEST_F(Walk, ReadsNamespacesOfNodes) {
  XDMNamespace* meta = library->getNextNamespace(nullptr);
  EXPECT_EQ(nodeAt(main.get(), "/library/@m:lang")->getNamespace(), meta);
  EXPECT_EQ(nodeAt(main.get(), "/library/book/m:price")->getNamespace(), meta);
  EXPECT_EQ(book->getNamespace(), nullptr);
}

TEST_F(Walk, ReadsTypesAndOccurrences) {
  EXPECT_EQ(book->getType(), 4);
  EXPECT_EQ(library->getNextAttribute(nullptr)->getType(), 0);
  EXPECT_EQ(book->getMaxOccurrences(), -1);
  EXPECT_EQ(elementAt(main.get(), "/library/book/m:price")->getMaxOccurrences(), 2);
}

TEST_F(Walk, ReadsEmptyColumnPropertiesOfALoadedNode) {
  for (XDMNode* node : {static_cast<XDMNode*>(book), static_cast<XDMNode*>(library->getNextAttribute(nullptr))}) {
    EXPECT_EQ(node->getDefault().length(), 0);
    EXPECT_EQ(node->getFormat().length(), 0);
    EXPECT_EQ(node->getInformat().length(), 0);
    EXPECT_EQ(node->getMaximumLength(), 0);
    EXPECT_EQ(node->getValidValues(), 0);
    EXPECT_EQ(node->getValidValue(0).length(), 0);
  }
}

TEST_F(Walk, MovesTheMarkOfTheRow) {
  XDMElement* address = elementAt(main.get(), "/library/address");
  EXPECT_TRUE(book->getDecidesRow());
  EXPECT_TRUE(address->setDecidesRow(true));
  EXPECT_FALSE(book->getDecidesRow());
  EXPECT_FALSE(address->setDecidesRow(false));
  EXPECT_FALSE(address->getDecidesRow());
}

}  // namespace

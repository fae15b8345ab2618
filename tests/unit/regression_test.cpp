// Tests for faults that were found and mended, each named for what went wrong.
#include <gtest/gtest.h>

#include <string>

#include "allocation_faults.h"
#include "model.h"

namespace {

const std::string document =
    "<xdm version='1.0'><element name='a'><element name='b'><element name='c'/></element></element></xdm>";

/** The deepest element of the document's model. */
XDMElemImpl* deepest(XDMMainImpl& main) { return main.root()->firstChild()->firstChild(); }

// A load succeeded although there had been no memory for the XPath of an element.
TEST(Regression, ALoadDoesNotSucceedWithAnElementWithoutXPath) {
  KvDom dom;  // read beforehand, since the XML parser loses memory when it is refused some
  ASSERT_TRUE(dom.loadXML(kv(document)));
  sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    XDMMainImpl main(0);
    bool loaded = false;
    bool met = false;
    {
      AllocationFaults faults(nth, extent);
      loaded = guarded(&main, "(XDM Root)", nullptr, false, [&] { return main.fromDOM(dom); });
      met = faults.met();
    }
    EXPECT_TRUE(!loaded || str(deepest(main)->getXPath()) == "/a/b/c");
    delete main.root();
    return met;
  });
}

// A rows-to-XML query left an ancestor out when there had been no memory for its step.
TEST(Regression, AQueryIsNotWrittenWithoutTheStepOfAnAncestor) {
  XDMMainImpl main(0);
  KvbString error;
  ASSERT_TRUE(main.loadFromXML(kv(document), &error));
  deepest(main)->selectAsColumn(kv("c"), false);
  const std::string whole = str(main.genXQueryFromColumns(true, false, &error));
  sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    KvbString query;
    bool met;
    {
      AllocationFaults faults(nth, extent);
      query = main.genXQueryFromColumns(true, false, &error);
      met = faults.met();
    }
    EXPECT_TRUE(query.isNull() || str(query) == whole) << str(query);
    return met;
  });
  main.removeColumn(main.column(0));
  delete main.root();
}

// A map with a path of many thousand steps made a tree too deep for the stack of whoever walked it.
TEST(Regression, AChildBelowTheDeepestElementIsRefused) {
  Model model;
  XDMElemImpl* element = model.root;
  for (int depth = 2; depth <= XDMElemImpl::deepest; ++depth) element = addChild(element, "a");
  bool created = true;
  EXPECT_EQ(element->createChild(kv(""), kv("a"), &created), nullptr);
  EXPECT_EQ(model.error(), "createChild() failed to instantiate a new child");
}

// A small document with long names inside each other and much below them filled any memory with XPaths.
TEST(Regression, XPathsOutOfProportionAreRefusedAsExhaustedMemory) {
  constexpr std::size_t most = (128 << 20) + 1024;
  EXPECT_TRUE(XDMMainImpl(0).holdXPath(most));
  EXPECT_FALSE(XDMMainImpl(0).holdXPath(most + 1));
}

// Marking looked at the same declarations again for every column below them. What is seen of it must not change.
TEST(Regression, ADeclarationWithoutUriIsStillWrittenWheneverItIsMet) {
  Model model;
  model.root->createNamespace(kv("p"), kv("urn:p"));
  model.root->createNamespace(kv("q"), kv(""));
  for (const char* name : {"b", "c"}) addChild(model.root, name)->selectAsColumn(kv(name), false);
  ASSERT_TRUE(model.main.markSelected());
  EXPECT_EQ(str(model.main.namespaceProlog()),
            "\n\ndeclare namespace p = \"urn:p\";\ndeclare namespace q = \"\";\ndeclare namespace q = \"\";\n");
}

// Looking a prefix up took as long as an element had declarations. Of two with one prefix the first still counts.
TEST(Regression, TheFirstOfManyDeclarationsOfAPrefixIsFound) {
  Model model;
  XDMElemImpl* child = addChild(model.root, "b");
  XDMNSImpl* first = nullptr;
  for (int i = 0; i < 100; ++i) {
    XDMNSImpl* declaration = model.root->createNamespace(kv("p" + std::to_string(i % 50)), kv("u"));
    if (i == 7) first = declaration;
    EXPECT_NE(child->lookupNamespace(kv("p0")), nullptr);
  }
  EXPECT_EQ(child->lookupNamespace(kv("p7")), first);
  EXPECT_EQ(child->lookupNamespace(kv("p50")), nullptr);
}

}  // namespace

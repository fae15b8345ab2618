// Tests building and writing XML: kvdom.cpp, kvdom_text.cpp, kvdom_tree.cpp and kvdom_writer.cpp.
#include <gtest/gtest.h>
#include <kvxdom/kvdom.h>
#include <kvxdom/kvdom_text.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "allocation_faults.h"
#include "small_stack.h"
#include "temporary.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

constexpr char declaration[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

KvbString text(std::string_view bytes) { return KvbString(bytes.data(), static_cast<unsigned>(bytes.size())); }

std::string bytesOf(const KvbString& text) { return {text.asCstr(), static_cast<std::size_t>(text.length())}; }

bool set(KvDomNode node, std::string_view name, std::string_view value) {
  return node.setAttributeValue(text(name), text(value));
}

KvDomNode add(KvDomNode node, std::string_view name) { return node.addChild(text(name)); }

std::string written(KvDom* document, bool indent) { return bytesOf(document->createXML(indent, document->getRoot())); }

/** What `xml` becomes when it is read and written again. */
std::string rewritten(std::string_view xml, bool indent) {
  KvDom document;
  EXPECT_TRUE(document.loadXML(text(xml))) << bytesOf(document.getErrorMessage());
  return written(&document, indent);
}

long entriesOf(const TemporaryFolder& folder) {
  return std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator());
}

/** A document with one element in each of `depth` levels. */
void buildDeep(KvDom* document, int depth) {
  ASSERT_TRUE(document->startNewDocument(text("a")));
  KvDomNode node = document->getRoot();
  for (int level = 1; level < depth; ++level) node = add(node, "a");
}

TEST(KvDomWrite, ADocumentIsIndentedAndBeginsWithADeclaration) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("xdm")));
  EXPECT_TRUE(set(document.getRoot(), "version", "1.0"));
  KvDomNode element = add(document.getRoot(), "element");
  EXPECT_TRUE(set(element, "name", "a"));
  EXPECT_TRUE(set(add(element, "attribute"), "name", "id"));
  add(document.getRoot(), "p:last");
  EXPECT_EQ(written(&document, true), declaration +
                                          "<xdm version=\"1.0\">\n"
                                          "  <element name=\"a\">\n"
                                          "    <attribute name=\"id\"/>\n"
                                          "  </element>\n"
                                          "  <p:last/>\n"
                                          "</xdm>\n"s);
  EXPECT_EQ(written(&document, false),
            "<xdm version=\"1.0\"><element name=\"a\"><attribute name=\"id\"/></element><p:last/></xdm>");
}

TEST(KvDomWrite, AnEmptyRootIsOneLine) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("r")));
  EXPECT_EQ(written(&document, true), declaration + "<r/>\n"s);
  EXPECT_EQ(written(&document, false), "<r/>");
}

TEST(KvDomWrite, WritingMayBeginBelowTheRoot) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r>1<a>2<b/>3</a>4<c/></r>")));
  EXPECT_EQ(bytesOf(document.createXML(false, document.getRoot().getFirstChild(false))), "<a>2<b/>3</a>");
}

TEST(KvDomWrite, TextIsKeptWhereBlanksWouldChangeIt) {
  struct {
    const char* xml;
    const char* indented;
  } const cases[] = {
      {"<r><a>t</a><b/></r>", "<r>\n  <a>t</a>\n  <b/>\n</r>\n"},
      {"<r>\n\n<a/>\t<b/>  </r>", "<r>\n  <a/>\n  <b/>\n</r>\n"},
      {"<r><a>1<b> <c/> </b></a></r>", "<r>\n  <a>1<b> <c/> </b></a>\n</r>\n"},
      {"<r><a><b/>1</a><c><d/></c></r>", "<r>\n  <a><b/>1</a>\n  <c>\n    <d/>\n  </c>\n</r>\n"},
      {"<r><a> </a></r>", "<r>\n  <a> </a>\n</r>\n"},
      {"<r>1<a><b/></a>2</r>", "<r>1<a><b/></a>2</r>\n"},
  };
  for (const auto& [xml, indented] : cases) {
    EXPECT_EQ(rewritten(xml, true), declaration + std::string(indented)) << xml;
    EXPECT_EQ(rewritten(xml, false), xml);
  }
}

TEST(KvDomWrite, WhatIsReadBackIsWhatWasWritten) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("r")));
  ASSERT_TRUE(set(document.getRoot(), "x", "&<>\"'\t\r\n ä😀"));
  EXPECT_EQ(written(&document, false), "<r x=\"&amp;&lt;&gt;&quot;'&#9;&#13;&#10; ä😀\"/>");
  KvDom again;
  ASSERT_TRUE(again.loadXML(document.createXML(true, document.getRoot())));
  EXPECT_EQ(bytesOf(again.getRoot().getAttributeValue(text("x"))), "&<>\"'\t\r\n ä😀");
}

TEST(KvDomWrite, TextIsEscapedSoThatItReadsTheSame) {
  EXPECT_EQ(rewritten("<r>&amp;&lt;&gt;\"'\t\n&#13;]]&gt;<![CDATA[<&]]></r>", false),
            "<r>&amp;&lt;&gt;\"'\t\n&#13;]]&gt;&lt;&amp;</r>");
}

TEST(KvDomWrite, SavingLoadingAndSavingGivesTheSameBytes) {
  const char* xml = "<r a='1' b=' 2 '>\n <p:c>x<d/> y </p:c><e z='&#10;'/><f>\n<g> </g></f></r>";
  for (bool indent : {true, false}) {
    std::string once = rewritten(xml, indent);
    EXPECT_EQ(rewritten(once, indent), once);
  }
}

TEST(KvDomWrite, AttributesKeepTheOrderInWhichTheyWereSet) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("r")));
  for (const char* name : {"z", "a", "m"}) EXPECT_TRUE(set(document.getRoot(), name, "1"));
  EXPECT_TRUE(set(document.getRoot(), "a", "2"));
  EXPECT_EQ(written(&document, false), "<r z=\"1\" a=\"2\" m=\"1\"/>");
}

TEST(KvDomWrite, ReadElementsCanBeChangedAndExtended) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r x='1'>a<b>c</b>d</r>")));
  EXPECT_TRUE(set(document.getRoot(), "y", "2"));
  EXPECT_TRUE(set(document.getRoot(), "x", "3"));
  EXPECT_FALSE(add(document.getRoot().getFirstChild(false), "in").null());
  EXPECT_FALSE(add(document.getRoot(), "last").null());
  EXPECT_EQ(written(&document, false), "<r x=\"3\" y=\"2\">a<b>c<in/></b>d<last/></r>");
}

TEST(KvDomWrite, NamesOfAttributesElementsAndRootsMustBeNames) {
  KvDom document;
  for (const char* name : {"a", "_", ":", "a:b", "a-1.x_", "ä", "日本"}) {
    EXPECT_TRUE(document.startNewDocument(text(name))) << name;
    EXPECT_TRUE(set(document.getRoot(), name, "")) << name;
    EXPECT_FALSE(add(document.getRoot(), name).null()) << name;
  }
  ASSERT_TRUE(document.startNewDocument(text("r")));
  for (std::string name : {""s, "1"s, "-a"s, ".a"s, "a b"s, "a<"s, "a\0"s, "a\n"s, "a="s, "\xE4"s, "a\xC3"s}) {
    EXPECT_FALSE(set(document.getRoot(), name, "")) << name;
    EXPECT_TRUE(add(document.getRoot(), name).null()) << name;
    KvDom other;
    EXPECT_FALSE(other.startNewDocument(text(name))) << name;
    EXPECT_NE(bytesOf(other.getErrorMessage()), "") << name;
    EXPECT_TRUE(other.getRoot().null()) << name;
  }
  EXPECT_EQ(written(&document, false), "<r/>");
}

TEST(KvDomWrite, ValuesMustBeTextInUtf8ThatXmlAllows) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("r")));
  EXPECT_TRUE(set(document.getRoot(), "x", "kept"));
  const std::string accepted[] = {"", "\t\n\r ~\x7F", "\xC2\x80\xDF\xBF",
                                  "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD",
                                  "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"};
  const std::string refused[] = {"\0"s,
                                 "\x01",
                                 "\x1F",
                                 "a\x0B",
                                 "\x80",
                                 "\xC3",
                                 "a\xC3z",
                                 "\xC0\x80",
                                 "\xC1\xBF",
                                 "\xE0\x9F\xBF",
                                 "\xE2\x82",
                                 "\xED\xA0\x80",
                                 "\xED\xBF\xBF",
                                 "\xEF\xBF\xBE",
                                 "\xEF\xBF\xBF",
                                 "\xF0\x8F\xBF\xBF",
                                 "\xF0\x90\x80",
                                 "\xF4\x90\x80\x80",
                                 "\xF5\x80\x80\x80",
                                 "\xFF"};
  for (const std::string& value : refused) {
    EXPECT_FALSE(set(document.getRoot(), "x", value)) << testing::PrintToString(value);
    EXPECT_EQ(bytesOf(document.getRoot().getAttributeValue(text("x"))), "kept");
  }
  for (const std::string& value : accepted) EXPECT_TRUE(set(document.getRoot(), "x", value)) << value;
}

TEST(KvDomWrite, ControlCharactersOfXml11AreNotWritten) {
  TemporaryFolder folder;
  std::string path = folder.write("kept.xml", "old");
  for (const char* xml : {"<?xml version='1.1'?><a>&#1;</a>", "<?xml version='1.1'?><a x='&#1;'/>"}) {
    KvDom document;
    ASSERT_TRUE(document.loadXML(text(xml)));
    EXPECT_TRUE(document.createXML(true, document.getRoot()).isNull());
    EXPECT_EQ(bytesOf(document.getErrorMessage()), "the document holds a control character, which XML 1.0 forbids");
    EXPECT_FALSE(document.createFile(text(path), true, document.getRoot()));
    EXPECT_EQ(bytesOf(document.getErrorMessage()), "the document holds a control character, which XML 1.0 forbids");
  }
  EXPECT_EQ(readFile(path), "old");
  EXPECT_EQ(entriesOf(folder), 1);
}

TEST(KvDomWrite, RemovingAnElementTakesItsTextAlong) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r>1<a>2<b>3</b>4</a>5<c>6</c>7</r>")));
  KvDomNode a = document.getRoot().getFirstChild(false);
  KvDomNode c = a.getNextSibling(false);
  a.remove();
  EXPECT_TRUE(a.null());
  EXPECT_EQ(bytesOf(document.getRoot().getValue(false)), "1567");
  EXPECT_EQ(bytesOf(c.getValue(false)), "6");
  EXPECT_EQ(written(&document, false), "<r>15<c>6</c>7</r>");
}

TEST(KvDomWrite, FirstMiddleAndLastChildrenCanBeRemoved) {
  for (int removed = 0; removed < 3; ++removed) {
    KvDom document;
    ASSERT_TRUE(document.loadXML(text("<r><a/><b/><c/></r>")));
    KvDomNode node = document.getRoot().getFirstChild(false);
    for (int i = 0; i < removed; ++i) node = node.getNextSibling(false);
    node.remove();
    add(document.getRoot(), "d");
    const char* const expected[] = {"<r><b/><c/><d/></r>", "<r><a/><c/><d/></r>", "<r><a/><b/><d/></r>"};
    EXPECT_EQ(written(&document, false), expected[removed]);
  }
}

TEST(KvDomWrite, TheOnlyChildCanBeRemovedAndAnotherAdded) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("r")));
  KvDomNode child = add(document.getRoot(), "a");
  KvDomNode other = child;
  child.remove();
  other.remove();
  EXPECT_EQ(written(&document, false), "<r/>");
  add(document.getRoot(), "b");
  EXPECT_EQ(written(&document, false), "<r><b/></r>");
}

TEST(KvDomWrite, TheRootStays) {
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(text("r")));
  KvDomNode root = document.getRoot();
  root.remove();
  EXPECT_FALSE(root.null());
  EXPECT_FALSE(document.getRoot().null());
}

TEST(KvDomWrite, StartingAnewReplacesTheDocument) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<old>text</old>")));
  ASSERT_TRUE(document.startNewDocument(text("new")));
  EXPECT_EQ(written(&document, false), "<new/>");
  EXPECT_EQ(document.getRoot().getLine(), 0);
}

TEST(KvDomWrite, AVeryDeepTreeIsWrittenAndReleasedWithLittleStack) {
  onSmallStack([] {
    KvDom document;
    buildDeep(&document, 200'000);
    EXPECT_EQ(written(&document, false).size(), 199'999 * "<a></a>"s.size() + "<a/>"s.size());
  });
}

TEST(KvDomWrite, IndentationStopsGrowingAtAHundredLevels) {
  KvDom document;
  buildDeep(&document, 103);
  std::string xml = written(&document, true);
  EXPECT_NE(xml.find("\n" + std::string(200, ' ') + "<a/>\n"), std::string::npos);
  EXPECT_NE(xml.find("\n" + std::string(200, ' ') + "<a>\n" + std::string(200, ' ') + "<a>\n"), std::string::npos);
  EXPECT_NE(xml.find("\n" + std::string(198, ' ') + "<a>\n"), std::string::npos);
  EXPECT_EQ(xml.find(std::string(201, ' ')), std::string::npos);
}

TEST(KvDomWrite, AFileHoldsTheSameAsTheText) {
  TemporaryFolder folder;
  KvDom document;
  std::string xml = "<r>";
  for (int i = 0; i < 10'000; ++i) xml += "<a x='" + std::to_string(i) + "'/>";
  ASSERT_TRUE(document.loadXML(text(xml + "</r>")));
  for (bool indent : {true, false}) {
    ASSERT_TRUE(document.createFile(text(folder.file("out.xml")), indent, document.getRoot()));
    EXPECT_EQ(bytesOf(document.getErrorMessage()), "");
    EXPECT_EQ(readFile(folder.file("out.xml")), written(&document, indent));
  }
}

TEST(KvDomWrite, AFileThatCannotBeWrittenSaysWhyAndLeavesNothing) {
  TemporaryFolder folder;
  fs::create_directory(folder.file("folder"));
  for (const std::string& path : {folder.file("missing/out.xml"), folder.file("folder"), "/dev/full"s, ""s}) {
    KvDom document;
    ASSERT_TRUE(document.startNewDocument(text("r")));
    EXPECT_FALSE(document.createFile(text(path), true, document.getRoot())) << path;
    EXPECT_NE(bytesOf(document.getErrorMessage()), "") << path;
  }
  EXPECT_EQ(entriesOf(folder), 1);
}

TEST(KvDomWrite, NothingIsWrittenFromANullHandle) {
  TemporaryFolder folder;
  KvDom document;
  EXPECT_TRUE(document.createXML(true, document.getRoot()).isNull());
  EXPECT_EQ(bytesOf(document.getErrorMessage()), "there is no element to write");
  EXPECT_FALSE(document.createFile(text(folder.file("out.xml")), true, KvDomNode()));
  EXPECT_EQ(bytesOf(document.getErrorMessage()), "there is no element to write");
  EXPECT_EQ(entriesOf(folder), 0);
}

TEST(KvDomWrite, EveryFailedAllocationIsAFailureAndNothingMore) {
  KvbString name = text("a"), value = text("value");
  long points = sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    KvDom document;
    KvbString xml;
    bool done, met;
    {
      AllocationFaults faults(nth, extent);
      done = document.startNewDocument(name) && document.getRoot().setAttributeValue(name, value) &&
             !document.getRoot().addChild(name).null();
      if (done) xml = document.createXML(true, document.getRoot());
      met = faults.met();
    }
    EXPECT_EQ(done && !xml.isNull(), !met);
    if (!xml.isNull()) {
      EXPECT_EQ(bytesOf(xml), declaration + "<a a=\"value\">\n  <a/>\n</a>\n"s);
    }
    EXPECT_TRUE(document.startNewDocument(name));
    return met;
  });
  EXPECT_GT(points, 3);
}

TEST(KvDomWrite, AFailedAdditionLeavesTheDocumentAsItWas) {
  KvbString name = text("a");
  KvDom document;
  ASSERT_TRUE(document.startNewDocument(name));
  int added = 0;
  for (; added < 1'000; ++added) {
    AllocationFaults faults(1, AllocationFaults::Extent::fromThenOn);
    if (document.getRoot().addChild(name).null()) break;
  }
  EXPECT_LT(added, 1'000);
  int found = 0;
  for (auto node = document.getRoot().getFirstChild(false); !node.null(); node = node.getNextSibling(false)) ++found;
  EXPECT_EQ(found, added);
}

}  // namespace

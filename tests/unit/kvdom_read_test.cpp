// Tests reading XML: kvdom.cpp, kvdom_reader.cpp and kvdom_tree.cpp.
#include <gtest/gtest.h>
#include <kvxdom/kvdom.h>
#include <kvxdom/kvdom_reader.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "small_stack.h"
#include "temporary.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

KvbString text(std::string_view bytes) { return KvbString(bytes.data(), static_cast<unsigned>(bytes.size())); }

std::string errorOf(const KvDom& document) { return document.getErrorMessage().asCstr(); }

std::string valueOf(const KvDomNode& node) {
  KvbString value = node.getValue(false);
  return std::string(value.asCstr(), static_cast<std::size_t>(value.length()));
}

std::string nameOf(const KvDomNode& node) { return node.getName().asCstr(); }

KvbString attributeOf(const KvDomNode& node, std::string_view name) { return node.getAttributeValue(text(name)); }

/** The error of loading `xml` from memory; empty on success. */
std::string loadError(std::string_view xml) {
  KvDom document;
  bool loaded = document.loadXML(text(xml));
  EXPECT_EQ(loaded, errorOf(document).empty());
  EXPECT_EQ(loaded, !document.getRoot().null());
  return errorOf(document);
}

/** The same with limits other than the usual ones. */
std::string limitedLoadError(std::string_view xml, const KvDomLimits& limits) {
  KvbString error;
  bool loaded = kvdomReadText(text(xml), &error, limits) != nullptr;
  EXPECT_EQ(loaded, error.length() == 0);
  return error.asCstr();
}

/** The text content of the document in `file`. */
std::string contentOfFile(const std::string& file) {
  KvDom document;
  EXPECT_TRUE(document.loadFile(text(file))) << errorOf(document);
  return valueOf(document.getRoot());
}

std::string repeated(std::string_view piece, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += piece;
  return result;
}

std::string nested(int depth) { return repeated("<a>", depth) + repeated("</a>", depth); }

std::string withAttributes(int count) {
  std::string result = "<a";
  for (int i = 0; i < count; ++i) result += " x" + std::to_string(i) + "=''";
  return result + "/>";
}

long openFiles() { return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()); }

/** Tells whether a file is opened. */
class OpenWatch {
 public:
  explicit OpenWatch(const std::string& path) : descriptor_(inotify_init1(IN_NONBLOCK)) {
    EXPECT_GE(inotify_add_watch(descriptor_, path.c_str(), IN_OPEN), 0);
  }
  ~OpenWatch() { close(descriptor_); }
  OpenWatch(const OpenWatch&) = delete;
  OpenWatch& operator=(const OpenWatch&) = delete;

  bool wasOpened() const {
    char events[4096];
    return read(descriptor_, events, sizeof events) > 0;
  }

 private:
  int descriptor_;
};

TEST(KvDomRead, ElementsAreWalkedInDocumentOrder) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r>\n <a/>x<b><c/></b><!-- d --><?e?><a/>\n</r>")));
  std::string names;
  for (auto node = document.getRoot().getFirstChild(false); !node.null(); node = node.getNextSibling(false)) {
    names += nameOf(node) + " ";
  }
  EXPECT_EQ(names, "a b a ");
  EXPECT_TRUE(document.getRoot().getNextSibling(false).null());
}

TEST(KvDomRead, AnElementWithoutElementChildrenHasNoFirstChild) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r>text<!-- c --><?p i?><![CDATA[d]]></r>")));
  EXPECT_TRUE(document.getRoot().getFirstChild(false).null());
}

TEST(KvDomRead, NamesAreAsWrittenAndPrefixesNeedNoDeclaration) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<p:a q:x='1' xmlns:z='u'/>"))) << errorOf(document);
  EXPECT_EQ(nameOf(document.getRoot()), "p:a");
  EXPECT_STREQ(attributeOf(document.getRoot(), "q:x").asCstr(), "1");
  EXPECT_STREQ(attributeOf(document.getRoot(), "xmlns:z").asCstr(), "u");
}

TEST(KvDomRead, AnAbsentAttributeIsNullAndAnEmptyOneIsNot) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r empty=''/>")));
  EXPECT_TRUE(attributeOf(document.getRoot(), "absent").isNull());
  EXPECT_FALSE(attributeOf(document.getRoot(), "empty").isNull());
  EXPECT_EQ(attributeOf(document.getRoot(), "empty").length(), 0);
  EXPECT_TRUE(attributeOf(document.getRoot(), "EMPTY").isNull());
}

TEST(KvDomRead, AttributeValuesAreNormalisedAsXmlSays) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r x='a\tb\r\nc&#9;d&#10;e&lt;&amp;&quot;'/>")));
  EXPECT_STREQ(attributeOf(document.getRoot(), "x").asCstr(), "a b c\td\ne<&\"");
}

TEST(KvDomRead, TextContentIncludesDescendantsButNoMarkup) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r>1<a>2<b>3</b>4</a><!-- no -->5<?no no?><![CDATA[<6>]]>&lt;7&#x38;<c/></r>")));
  KvDomNode a = document.getRoot().getFirstChild(false);
  EXPECT_EQ(valueOf(document.getRoot()), "12345<6><78");
  EXPECT_EQ(valueOf(a), "234");
  EXPECT_EQ(valueOf(a.getFirstChild(false)), "3");
  EXPECT_EQ(valueOf(a.getNextSibling(false)), "");
  EXPECT_FALSE(a.getNextSibling(false).getValue(false).isNull());
}

TEST(KvDomRead, BlanksBetweenElementsAreTextToo) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<r>\r\n <a> x </a>\r</r>")));
  EXPECT_EQ(valueOf(document.getRoot()), "\n  x \n");
}

TEST(KvDomRead, TheLineIsThatWhereTheStartTagEnds) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<?xml version='1.0'?>\n<r\n x='1'\n>\n<a/>\n</r>")));
  EXPECT_EQ(document.getRoot().getLine(), 4);
  EXPECT_EQ(document.getRoot().getFirstChild(false).getLine(), 5);
}

TEST(KvDomRead, ANullHandleAnswersNothing) {
  KvDomNode none;
  EXPECT_TRUE(none.getName().isNull());
  EXPECT_TRUE(none.getValue(false).isNull());
  EXPECT_TRUE(attributeOf(none, "x").isNull());
  EXPECT_TRUE(none.getFirstChild(false).null());
  EXPECT_TRUE(none.getNextSibling(false).null());
  EXPECT_TRUE(none.addChild(text("x")).null());
  EXPECT_FALSE(none.setAttributeValue(text("x"), text("y")));
  EXPECT_EQ(none.getLine(), 0);
  none.remove();
  EXPECT_TRUE(none.null());
}

TEST(KvDomRead, TheEncodingOfAFileIsTheOneItDeclares) {
  struct {
    const char* name;
    std::string bytes;
    const char* expected;
  } const cases[] = {
      {"utf-8", "<a>\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80</a>", "ä€😀"},
      {"utf-8 with a mark", "\xEF\xBB\xBF<a>\xC3\xA4</a>", "ä"},
      {"iso-8859-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4\xDF</a>", "äß"},
      {"windows-1252", "<?xml version='1.0' encoding='windows-1252'?><a>\x80\x93</a>", "€“"},
      {"utf-16 little", "\xFF\xFE<\0a\0>\0\xE4\0\x3D\xD8\x00\xDE<\0/\0a\0>\0"s, "ä😀"},
      {"utf-16 big", "\xFE\xFF\0<\0a\0>\0\xE4\xD8\x3D\xDE\x00\0<\0/\0a\0>"s, "ä😀"},
  };
  TemporaryFolder folder;
  for (const auto& [name, bytes, expected] : cases) {
    EXPECT_EQ(contentOfFile(folder.write("encoded.xml", bytes)), expected) << name;
  }
}

TEST(KvDomRead, ATextIsUtf8WhateverItDeclares) {
  for (const char* encoding : {"UTF-8", "ISO-8859-1", "windows-1252", "UTF-16", "no-such-encoding"}) {
    KvDom document;
    std::string xml = "<?xml version='1.0' encoding='"s + encoding + "'?><a x='ä'>€😀</a>";
    EXPECT_TRUE(document.loadXML(text(xml))) << encoding << ": " << errorOf(document);
    EXPECT_EQ(valueOf(document.getRoot()), "€😀") << encoding;
    EXPECT_STREQ(attributeOf(document.getRoot(), "x").asCstr(), "ä") << encoding;
  }
}

TEST(KvDomRead, LongTextsOutsideAsciiArriveWhole) {
  std::string content = "x" + repeated("😀", 600'000) + repeated("aäz€", 50'000);
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<a x='" + content + "'>" + content + "</a>"))) << errorOf(document);
  EXPECT_TRUE(valueOf(document.getRoot()) == content);
  EXPECT_TRUE(attributeOf(document.getRoot(), "x").asCstr() == content);
}

TEST(KvDomRead, MalformedDocumentsAreRefusedWithLineAndColumn) {
  struct {
    std::string xml;
    const char* error;
  } const cases[] = {
      {"", "line 1, column 1: "},
      {"  \n ", "line 2, column "},
      {"not xml", "line 1, column "},
      {"\x7F"
       "ELF\x02\x01\x01\0\0\0"s,
       "line 1, column "},
      {"<a", "line 1, column 3: "},
      {"<a>\n<b>", "line 2, column 4: "},
      {"<a>\n  <b></a>", "line 2, column 8: "},
      {"<a></a><b/>", "line 1, column "},
      {"<a/>x", "line 1, column "},
      {"<a/>\0"s, "line 1, column 5: "},
      {"<a/>\n\0<b/>"s, "line 2, column 1: "},
      {"<a/>\xC3", "line 1, column "},
      {"<a/>\n\xE2\x82", "line 1, column "},
      {"<a/>\xF0\x9F\x98", "line 1, column "},
      {"<a x='1' x='2'/>", "line 1, column "},
      {"<a x='<'/>", "line 1, column "},
      {"<a>&#0;</a>", "line 1, column "},
      {"<a>&#xD800;</a>", "line 1, column "},
      {"<a>&unknown;</a>", "line 1, column "},
      {"<a>\0</a>"s, "line 1, column "},
      {"<a>\x01</a>", "line 1, column "},
      {"<a>\xEF\xBF\xBF</a>", "line 1, column "},
      {"<a>\xE4</a>", "line 1, column "},
      {"<a>\xC0\xAF</a>", "line 1, column "},
      {"<a>\xED\xA0\x80</a>", "line 1, column "},
      {"<a>]]></a>", "line 1, column "},
      {"<1/>", "line 1, column "},
      {"<!DOCTYPE a [<!ELEMENT a>]><a/>", "line 1, column "},
  };
  for (const auto& [xml, error] : cases) {
    std::string message = loadError(xml);
    EXPECT_EQ(message.substr(0, std::string_view(error).size()), error) << xml << ": " << message;
    EXPECT_GT(message.size(), std::string_view("line 1, column 1: ").size()) << xml;
  }
}

TEST(KvDomRead, Utf16ThatEndsAValueInHalfACharacterIsRefused) {
  const auto utf16 = [](std::u16string_view xml) {
    return "\xFF\xFE" + std::string(reinterpret_cast<const char*>(xml.data()), 2 * xml.size());
  };
  TemporaryFolder folder;
  KvDom document;
  EXPECT_TRUE(document.loadFile(text(folder.write("a.xml", utf16(u"<a x='\xD83D\xDE00'/>")))));
  for (std::u16string_view xml : {u"<a x='a\xD83D'/>", u"<a x='\xD83D' y=''/>", u"<a x='\xD83Dz'/>", u"<a>\xD83D</a>",
                                  u"<!DOCTYPE a [<!ATTLIST a x CDATA '\xD83D'>]><a/>"}) {
    EXPECT_FALSE(document.loadFile(text(folder.write("a.xml", utf16(xml)))))
        << attributeOf(document.getRoot(), "x").asCstr();
    EXPECT_EQ(errorOf(document).substr(0, 15), "line 1, column ");
  }
}

TEST(KvDomRead, ALineBreakOfXml11MayEndTheDocument) {
  TemporaryFolder folder;
  KvDom document;
  EXPECT_TRUE(document.loadXML(text("<?xml version='1.1'?><a/>\xC2\x85"))) << errorOf(document);
  std::string latin1 = "<?xml version='1.1' encoding='ISO-8859-1'?><a/>\x85";
  EXPECT_TRUE(document.loadFile(text(folder.write("a.xml", latin1)))) << errorOf(document);
}

TEST(KvDomRead, AFileInAnUnknownEncodingIsRefused) {
  TemporaryFolder folder;
  KvDom document;
  std::string path = folder.write("a.xml", "<?xml version='1.0' encoding='no-such-encoding'?><a/>");
  EXPECT_FALSE(document.loadFile(text(path)));
  EXPECT_EQ(errorOf(document).substr(0, 15), "line 1, column ");
}

TEST(KvDomRead, APathThatCannotBeReadSaysWhy) {
  TemporaryFolder folder;
  struct {
    std::string path;
    const char* reason;
  } const cases[] = {
      {folder.file("missing.xml"), ": No such file or directory"},
      {folder.path(), ": Is a directory"},
      {"", ": No such file or directory"},
  };
  for (const auto& [path, reason] : cases) {
    KvDom document;
    EXPECT_FALSE(document.loadFile(text(path)));
    EXPECT_EQ(errorOf(document), path + reason);
    EXPECT_TRUE(document.getRoot().null());
  }
}

TEST(KvDomRead, APathIsNoUrl) {
  TemporaryFolder folder;
  EXPECT_EQ(contentOfFile(folder.write("a%20b#c?d.xml", "<a>odd name</a>")), "odd name");
  KvDom document;
  EXPECT_FALSE(document.loadFile(text("file://" + folder.file("a%20b#c?d.xml"))));
}

TEST(KvDomRead, FilesAreClosedAfterSuccessAndFailure) {
  TemporaryFolder folder;
  std::string good = folder.write("good.xml", "<a/>");
  std::string bad = folder.write("bad.xml", "<a>");
  long before = openFiles();
  for (int i = 0; i < 10; ++i) {
    KvDom document;
    EXPECT_TRUE(document.loadFile(text(good)));
    EXPECT_FALSE(document.loadFile(text(bad)));
  }
  EXPECT_EQ(openFiles(), before);
}

TEST(KvDomRead, LoadingAgainReplacesTheDocumentAndTheMessage) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<first/>")));
  ASSERT_FALSE(document.loadXML(text("<second>")));
  EXPECT_NE(errorOf(document), "");
  EXPECT_TRUE(document.getRoot().null());
  ASSERT_TRUE(document.loadXML(text("<third/>")));
  EXPECT_EQ(errorOf(document), "");
  EXPECT_EQ(nameOf(document.getRoot()), "third");
}

TEST(KvDomRead, AnExternalSubsetIsAcceptedAndNeverOpened) {
  TemporaryFolder folder;
  std::string subset = folder.write("subset.dtd", "<!ELEMENT a ANY><!ATTLIST a x CDATA 'from the subset'>");
  OpenWatch watch(subset);
  KvDom document;
  ASSERT_TRUE(document.loadXML(text("<!DOCTYPE a SYSTEM '" + subset + "'><a>t</a>"))) << errorOf(document);
  ASSERT_TRUE(document.loadXML(text("<!DOCTYPE a PUBLIC '-//X//Y' 'file://" + subset + "'><a>t</a>")));
  EXPECT_TRUE(attributeOf(document.getRoot(), "x").isNull());
  EXPECT_FALSE(watch.wasOpened());
  readFile(subset);
  EXPECT_TRUE(watch.wasOpened());
}

TEST(KvDomRead, AMissingExternalSubsetIsNotMissed) {
  EXPECT_EQ(loadError("<!DOCTYPE a SYSTEM 'http://nowhere.invalid/a.dtd'><a/>"), "");
  EXPECT_EQ(loadError("<!DOCTYPE a SYSTEM '/nowhere/a.dtd' [<!ELEMENT a EMPTY>]><a/>"), "");
  EXPECT_EQ(loadError("<!DOCTYPE a><a/>"), "");
}

TEST(KvDomRead, AReferenceThatOnlyTheExternalSubsetCouldExplainIsRefused) {
  EXPECT_EQ(loadError("<!DOCTYPE a SYSTEM 'a.dtd'><a>x&foo;y</a>"), "line 1, column 37: entity 'foo' not found");
  EXPECT_EQ(loadError("<!DOCTYPE a SYSTEM 'a.dtd'><a x='&foo;'/>"), "line 1, column 39: entity 'foo' not found");
}

TEST(KvDomRead, DefaultsOfTheInternalSubsetCount) {
  KvDom document;
  ASSERT_TRUE(document.loadXML(text(
      "<!DOCTYPE a [<!ELEMENT a (b*)><!ATTLIST a x CDATA 'd' y CDATA 'e' z CDATA #IMPLIED>]><a y='own'><c/></a>")));
  EXPECT_STREQ(attributeOf(document.getRoot(), "x").asCstr(), "d");
  EXPECT_STREQ(attributeOf(document.getRoot(), "y").asCstr(), "own");
  EXPECT_TRUE(attributeOf(document.getRoot(), "z").isNull());
}

TEST(KvDomRead, EveryKindOfEntityDeclarationIsRefusedAndNothingIsOpened) {
  TemporaryFolder folder;
  std::string secret = folder.write("secret.txt", "secret");
  OpenWatch watch(secret);
  const std::string declarations[] = {
      "<!ENTITY e 'value'>",
      "<!ENTITY e SYSTEM '" + secret + "'>",
      "<!ENTITY e PUBLIC '-//X//Y' 'file://" + secret + "'>",
      "<!ENTITY % e 'value'>",
      "<!ENTITY % e SYSTEM '" + secret + "'> %e;",
      "<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM '" + secret + "' NDATA n>",
  };
  for (const std::string& declaration : declarations) {
    std::string error = loadError("<!DOCTYPE a [" + declaration + "]><a/>");
    EXPECT_NE(error.find(": entity declarations are not accepted ('e')"), std::string::npos) << declaration << error;
  }
  EXPECT_FALSE(watch.wasOpened());
}

TEST(KvDomRead, RedeclaringAPredefinedEntityIsRefusedToo) {
  EXPECT_EQ(loadError("<!DOCTYPE a [\n<!ENTITY lt '&#38;#60;'>]><a/>"),
            "line 2, column 25: entity declarations are not accepted ('lt')");
}

TEST(KvDomRead, EntitiesThatMultiplyAreRefusedBeforeTheyDo) {
  std::string xml = "<!DOCTYPE a [<!ENTITY e0 'lol'>";
  for (int i = 1; i < 10; ++i) {
    xml += "<!ENTITY e" + std::to_string(i) + " '" + repeated("&e" + std::to_string(i - 1) + ";", 10) + "'>";
  }
  EXPECT_EQ(loadError(xml + "]><a>&e9;</a>"), "line 1, column 32: entity declarations are not accepted ('e0')");
}

TEST(KvDomRead, LimitsAcceptTheLimitAndRefuseOneMore) {
  struct {
    KvDomLimits limits;
    const char* accepted;
    const char* refused;
    const char* error;
  } const cases[] = {
      {{.depth = 2},
       "<a><b/><b/></a>",
       "<a><b><c/></b></a>",
       "line 1, column 11: more than 2 elements inside each other"},
      {{.attributes = 2},
       "<a x='' y=''/>",
       "<a x='' y='' z=''/>",
       "line 1, column 20: more than 2 attributes on an element"},
      {{.textBytes = 4}, "<a x='ää'/>", "<a x='ääa'/>", "line 1, column 13: more than 4 bytes in an attribute value"},
      {{.textBytes = 4}, "<a>12ä</a>", "<a>123ä</a>", "line 1, column 8: more than 4 bytes between two tags"},
      {{.textBytes = 4},
       "<a>1234<b>1234</b>1234</a>",
       "<a>12<!-- -->3<![CDATA[45]]></a>",
       "line 1, column 29: more than 4 bytes between two tags"},
      {{.textBytes = 4}, "<abcd/>", "<abcde/>", "line 1, column 9: more than 4 bytes in a name"},
      {{.documentBytes = 8}, "<a>x</a>", "<a>x</a>\n", "line 1, column 1: more than 8 bytes in the document"},
      {{.elements = 3}, "<a><b/><b/></a>", "<a><b/><b/>\n<b/></a>", "line 2, column 5: more than 3 elements"},
  };
  for (const auto& [limits, accepted, refused, error] : cases) {
    EXPECT_EQ(limitedLoadError(accepted, limits), "") << accepted;
    EXPECT_EQ(limitedLoadError(refused, limits), error) << refused;
  }
}

TEST(KvDomRead, DefaultedAttributesCountAgainstTheLimits) {
  std::string xml = "<!DOCTYPE a [<!ATTLIST b x CDATA '0123456789' y CDATA ''>]><a>" + repeated("<b/>", 100) + "</a>";
  EXPECT_EQ(limitedLoadError(xml, {.attributes = 2, .documentBytes = 2'000}), "");
  EXPECT_NE(limitedLoadError(xml, {.attributes = 1}).find("more than 1 attributes"), std::string::npos);
  EXPECT_NE(limitedLoadError(xml, {.documentBytes = 1'999}).find("more than 1999 bytes in the document"),
            std::string::npos);
}

TEST(KvDomRead, TheLimitsAreTheseAndHoldForFilesAndTexts) {
  KvDomLimits limits;
  EXPECT_EQ(limits.depth, 1'000u);
  EXPECT_EQ(limits.attributes, 1'000u);
  EXPECT_EQ(limits.textBytes, 10'000'000u);
  EXPECT_EQ(limits.documentBytes, 1'073'741'824u);
  EXPECT_EQ(limits.elements, 50'000'000u);
  TemporaryFolder folder;
  KvDom document;
  EXPECT_TRUE(document.loadFile(text(folder.write("a.xml", nested(1'000)))));
  EXPECT_FALSE(document.loadFile(text(folder.write("a.xml", nested(1'001)))));
}

TEST(KvDomRead, TheUsualLimitsAcceptTheLimitAndRefuseOneMore) {
  std::string most(10'000'000, 'x');
  struct {
    std::string accepted;
    std::string refused;
  } const cases[] = {
      {nested(1'000), nested(1'001)},
      {withAttributes(1'000), withAttributes(1'001)},
      {"<a x='" + most + "'/>", "<a x='" + most + "x'/>"},
      {"<a>" + most + "</a>", "<a>" + most + "x</a>"},
  };
  for (const auto& [accepted, refused] : cases) {
    EXPECT_EQ(loadError(accepted), "");
    EXPECT_NE(loadError(refused).find("more than 1000"), std::string::npos);
  }
}

TEST(KvDomRead, TheDeepestDocumentNeedsLittleStack) {
  onSmallStack([] {
    KvDom document;
    ASSERT_TRUE(document.loadXML(text(nested(1'000)))) << errorOf(document);
    int depth = 0;
    for (auto node = document.getRoot(); !node.null(); node = node.getFirstChild(false)) ++depth;
    EXPECT_EQ(depth, 1'000);
    EXPECT_FALSE(document.loadXML(text(nested(1'001))));
  });
}

}  // namespace

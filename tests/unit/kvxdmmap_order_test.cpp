// Tests kvxdmmap.cpp: which OUTPUT and which NAMESPACES count, in whatever order they stand around the table.
#include <gtest/gtest.h>

#include "xmlmap.h"

namespace {

constexpr unsigned acceptOutputAndHeading = 0x60000000;

/** A map from one letter for each child of the root: T the table, U another one, O and N an OUTPUT and a NAMESPACES,
 * which carry their number. */
std::string mapOf(std::string_view version, std::string_view letters) {
  std::string body;
  int outputs = 0;
  int namespaces = 0;
  for (char letter : letters) {
    if (letter == 'T') body += table("t", "/doc/item", column("x", "/doc/item/x"));
    if (letter == 'U') body += table("u", "/doc/item", column("x", "/doc/item/x"));
    if (letter == 'O') {
      body += "<OUTPUT><HEADING><ATTRIBUTE name='from' value='O" + std::to_string(++outputs) + "'/></HEADING></OUTPUT>";
    }
    if (letter == 'N') {
      body += "<NAMESPACES><NS id='1' prefix='N" + std::to_string(++namespaces) + "'>urn:n</NS></NAMESPACES>";
    }
  }
  return rowmaps(version, body);
}

/** What an import of table t finds: the OUTPUT, by its heading attribute, and the NAMESPACES, by its prefix. */
std::string found(std::string_view version, std::string_view letters) {
  MapImport import;
  EXPECT_TRUE(import.run(mapOf(version, letters), "t", {}, acceptOutputAndHeading)) << letters << import.error();
  XDMAttrImpl* from = import.root()->firstAttribute();
  XDMNSImpl* declaration = import.root()->firstNamespace();
  return (from ? str(from->getDefault()) : "-") + " " + (declaration ? str(declaration->getPrefix()) : "-");
}

TEST(MapOrder, DecidesWhichOutputAndNamespacesCount) {
  const struct {
    const char* letters;
    const char* in19;
    const char* in21;
  } cases[] = {
      // one of each, and less
      {"T", "- -", "- -"},
      {"OT", "O1 -", "O1 -"},
      {"TO", "O1 -", "O1 -"},
      {"NT", "- N1", "- N1"},
      {"TN", "- N1", "- N1"},
      {"ONT", "O1 N1", "O1 N1"},
      {"NOT", "O1 N1", "O1 N1"},
      {"OTN", "O1 -", "O1 N1"},
      {"NTO", "O1 N1", "O1 N1"},
      {"TON", "O1 -", "O1 N1"},
      {"TNO", "O1 N1", "O1 N1"},
      // several before the table: the first one
      {"OOT", "O1 -", "O1 -"},
      {"NNT", "- N1", "- N1"},
      {"NNOOT", "O1 N1", "O1 N1"},
      // an OUTPUT on each side: the one before
      {"OTO", "O1 -", "O1 -"},
      {"OTON", "O1 -", "O1 N1"},
      // on the way to an OUTPUT the last NAMESPACES, one before the table included
      {"NTN", "- N2", "- N2"},
      {"TNN", "- N2", "- N2"},
      {"NTNO", "O1 N2", "O1 N2"},
      {"TNNO", "O1 N2", "O1 N2"},
      {"NTNNO", "O1 N3", "O1 N3"},
      // behind that OUTPUT the first one, in 2.1 and only if none was there before
      {"NTON", "O1 N1", "O1 N1"},
      {"TNON", "O1 N1", "O1 N1"},
      {"TONN", "O1 -", "O1 N1"},
      {"TOON", "O1 -", "O1 N1"},
      {"ONTN", "O1 N1", "O1 N1"},
      {"OTNN", "O1 -", "O1 N1"},
      // other tables are passed over
      {"UOTN", "O1 -", "O1 N1"},
      {"OUTN", "O1 -", "O1 N1"},
      {"UTNUO", "O1 N1", "O1 N1"},
      {"TUOUN", "O1 -", "O1 N1"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(found("1.9", each.letters), each.in19) << each.letters;
    EXPECT_EQ(found("2.1", each.letters), each.in21) << each.letters;
  }
}

// Another table's OUTPUT is found all the same, and not accepted.
TEST(MapOrder, LooksForNoSecondOutputWhenTheFirstIsForAnotherTable) {
  const std::string body = "<OUTPUT><TABLEREF name='u'/></OUTPUT>" +
                           table("t", "/doc/item", column("x", "/doc/item/x")) +
                           "<OUTPUT><TABLEREF name='t'/><HEADING><ATTRIBUTE name='a' value='1'/></HEADING></OUTPUT>";
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps("1.9", body), "t", {}, 0x20000000));
  EXPECT_EQ(outline(import.root()), "doc(item*(x))");
}

TEST(MapOrder, SendsEveryPathThroughTheExtendedBuilderOnceThereAreNamespaces) {
  const std::string body =
      "<NAMESPACES><NS id='1' prefix='n'>urn:n</NS></NAMESPACES><TABLE name='t'>"
      "<TABLE-PATH syntax='XPath'>/{1}doc</TABLE-PATH><COLUMN name='x'>"
      "<PATH syntax='XPath'>/{1}doc/{1}x</PATH><TYPE>numeric</TYPE></COLUMN></TABLE>";
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps("1.9", body))) << import.error();
  EXPECT_EQ(outline(import.root()), "n:doc*(n:x)");
}

TEST(MapOrder, SendsEveryPathThroughThePlainBuilderWithoutNamespaces) {
  const std::string body =
      "<TABLE name='t'><TABLE-PATH syntax='XPathENR'>/{1}doc</TABLE-PATH><COLUMN name='x'>"
      "<PATH>/{1}doc/x</PATH><TYPE>numeric</TYPE></COLUMN></TABLE>";
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps("2.1", body))) << import.error();
  EXPECT_EQ(outline(import.root()), "{1}doc*(x)");
}

}  // namespace

// Tests `xdm document`: rows in CSV and XML, in both processors.
#include <pugixml.hpp>
#include <sstream>

#include "tool.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

/** The document without its declaration. */
std::string documentIn(const std::string& output) {
  pugi::xml_document document;
  EXPECT_TRUE(document.load_string(output.c_str(), pugi::parse_default | pugi::parse_ws_pcdata)) << output;
  std::ostringstream text;
  document.document_element().print(text, "", pugi::format_raw);
  return text.str();
}

class DocumentTest : public ToolTest {
 protected:
  Words words(const std::string& rows, const Words& options = {}) const {
    Words all = {"document", model, "--group-column", subject, "--column", isbn, "--column", title, rows};
    all.insert(all.end(), options.begin(), options.end());
    return all;
  }

  std::string csv(const std::string& text) const { return write("rows.csv", text); }
};

class Document : public DocumentTest, public testing::WithParamInterface<const char*> {
 protected:
  std::string madeOf(const std::string& rows, Words options = {}) const {
    options.insert(options.end(), {"--processor", GetParam()});
    return documentIn(outputOf(words(rows, options)));
  }
  std::string madeBy(const std::string& qualifiedModel, const std::string& rows) const {
    return documentIn(
        outputOf({"document", qualifiedModel, rows, "--column", "/a/r/p:v=v", "--processor", GetParam()}));
  }
};

INSTANTIATE_TEST_SUITE_P(Processors, Document, testing::Values("saxon", "basex"),
                         [](const auto& info) { return std::string(info.param); });

TEST_P(Document, IsMadeOfCsv) {
  EXPECT_EQ(madeOf(csv("subject,isbn,title\r\ns,1,a\r\ns,2,b\r\n")),
            R"(<library><shelf subject="s"><book isbn="1"><title>a</title></book>)"
            R"(<book isbn="2"><title>b</title></book></shelf></library>)");
}

TEST_P(Document, GroupsTheRows) {
  EXPECT_EQ(
      madeOf(csv("subject,isbn,title\ns,1,a\nt,2,b\ns,3,c\n"), {"--group-rows"}),
      R"(<library><shelf subject="s"><book isbn="1"><title>a</title></book><book isbn="3"><title>c</title></book>)"
      R"(</shelf><shelf subject="t"><book isbn="2"><title>b</title></book></shelf></library>)");
}

TEST_P(Document, TakesTheColumnsInAnyOrder) {
  EXPECT_EQ(madeOf(csv("\"title\",subject,isbn\r\n<a&>,s,1")),
            R"(<library><shelf subject="s"><book isbn="1"><title>&lt;a&amp;&gt;</title></book></shelf></library>)");
}

TEST_P(Document, ReadsByteOrderMarkQuotesAndLineEndsInValues) {
  EXPECT_EQ(madeOf(csv("\xEF\xBB\xBFtitle,subject,isbn\r\n\"say \"\"é\"\",\nor\r\nnot\", s ,1\r\n")),
            "<library><shelf subject=\" s \"><book isbn=\"1\"><title>say \"é\",\nor\r\nnot</title></book></shelf>"
            "</library>");
}

TEST_P(Document, LeavesOutWhatIsEmpty) {
  EXPECT_EQ(madeOf(csv("subject,isbn,title\r\n,\"\",a\r\n")),
            "<library><shelf><book isbn=\"\"><title>a</title></book></shelf></library>");
}

TEST_P(Document, IsMadeOfNoRows) { EXPECT_EQ(madeOf(csv("subject,isbn,title\r\n")), "<library/>"); }

TEST_P(Document, IsMadeOfTheXmlThatRowsPrints) {
  std::string xml =
      "\xEF\xBB\xBF<?xml "
      "version='1.0'?><table>\n<row><subject>s</subject><isbn>1</isbn><title>a</title>\n"
      "</row></table>";
  EXPECT_EQ(madeOf(write("rows.xml", xml)), madeOf(csv("subject,isbn,title\r\ns,1,a\r\n")));
}

TEST_P(Document, IsMadeOfRowsInTheNamespacesOfTheQuery) {
  std::string qualified = write("q.xdm", R"(<xdm version="1.0"><element name="a" prefix="">
    <namespace prefix="" uri="urn:d&amp;amp;e"/><namespace prefix="p" uri="urn:p"/>
    <element name="r" prefix="" decides="true"><element name="v" prefix="p"/></element></element></xdm>)");
  std::string expected = madeBy(qualified, csv("v\r\nx\r\n"));
  EXPECT_THAT(expected, HasSubstr("<a xmlns=\"urn:d&amp;e\""));
  EXPECT_THAT(expected, HasSubstr(">x</p:v>"));
  for (const char* rows :
       {"<table><row><v>x</v></row></table>", "<table xmlns='urn:d&amp;e'><row><v>x</v></row></table>",
        "<o:table xmlns:o='urn:o'><o:row><o:v>x</o:v></o:row></o:table>"}) {
    EXPECT_EQ(madeBy(qualified, write("rows.xml", rows)), expected);
  }
}

TEST_P(Document, ReadsRowsWhoseColumnsHaveAPrefix) {
  std::string qualified = write("q.xdm", R"(<xdm version="1.0"><element name="a">
    <namespace prefix="p" uri="urn:p"/><element name="r" decides="true"><element name="v"/></element>
    </element></xdm>)");
  std::string made =
      outputOf({"document", qualified, csv("p:v\r\nx\r\n"), "--column", "/a/r/v=p:v", "--processor", GetParam()});
  EXPECT_THAT(made, HasSubstr("<v>x</v>"));
}

TEST_P(Document, AndItsRowsGiveEachOther) {
  std::string rows = "subject,isbn,title\r\ns,1,a\r\nt,2,\" b\n\"\r\nt,3,\r\n";
  Words make = words(csv(rows), {"--group-rows", "-o", file("made.xml"), "--processor", GetParam()});
  EXPECT_EQ(outputOf(make), "");
  EXPECT_EQ(outputOf({"rows", model, "--column", subject, "--column", isbn, "--column", title, file("made.xml"),
                      "--keep-whitespace", "--processor", GetParam()}),
            rows);
}

/** What is said of rows that can't be used. */
class DocumentRows : public DocumentTest {
 protected:
  void expectRefused(const std::string& text, const std::string& why) const {
    std::string rows = csv(text);
    EXPECT_EQ(errorOf(words(rows)), "xdm: error: '" + rows + "' " + why);
  }
};

TEST_F(DocumentRows, MustHaveExactlyTheColumnsOfTheModel) {
  expectRefused("subject,isbn\r\n", "has no column 'title', which the model has");
  expectRefused("subject,isbn,title,price\r\n", "has the column 'price', which the model has not");
  expectRefused("subject,isbn,title,isbn\r\n", "has the column 'isbn' more than once");
  expectRefused("subject,isbn, title\r\n", "has no column 'title', which the model has");
  expectRefused("", "has no header line with the names of the columns");
}

TEST_F(DocumentRows, MustHaveAsManyFieldsAsColumns) {
  expectRefused("subject,isbn,title\r\na,b,\"c\r\nd\"\r\na,b\r\n", "line 4: the row has 2 fields instead of 3");
  expectRefused("subject,isbn,title\na,b,c,d\n", "line 2: the row has 4 fields instead of 3");
  expectRefused("subject,isbn,title\r\n\r\n", "line 2: the row has 1 fields instead of 3");
}

TEST_F(DocumentRows, MustBeUtf8) {
  for (const char* bad : {"\xFF", "\xC0\x80", "\xED\xA0\x80", "\xC3", "\xF4\x90\x80\x80"}) {
    expectRefused("subject,isbn,title\r\na,\"b\nb\",\"c\n" + std::string(bad) + "\"\r\n", "is not UTF-8 on line 4");
  }
}

TEST_F(DocumentRows, MustBeCsv) {
  for (const char* bad : {"a,b\"b,c", "a,\"b\"b,c", "a,b,\"c\r\n"}) {
    expectRefused("subject,isbn,title\r\n" + std::string(bad),
                  "is not CSV: the quotes of the row that begins on line 2 don't fit together");
  }
}

TEST_F(DocumentRows, MustHoldCharactersOfXml) {
  expectRefused("subject,isbn,title\r\na,b,c\r\na,b,\x01\r\n",
                "line 3: row 2, column 'title' holds the character U+0001, which XML forbids");
  expectRefused("subject,isbn,title\r\na,\xEF\xBF\xBF,c\r\n",
                "line 2: row 1, column 'isbn' holds the character U+FFFF, which XML forbids");
}

TEST_F(DocumentRows, InXmlMustBeATableOfTheModel) {
  expectRefused("<rows/>", "is no table of the model's rows: line 1: the element rows in the place of table");
  expectRefused("<table><row><price/></row></table>",
                "is no table of the model's rows: row 1 has the column 'price', which the model has not");
  expectRefused("<table>\n<row>", "is no table of the model's rows: line 2: no element found");
}

TEST_F(DocumentRows, MayStandOnStandardInput) {
  Words fromInput = words("-");
  EXPECT_THAT(documentIn(outputOf(fromInput, "subject,isbn,title\r\ns,1,a\r\n")), HasSubstr("<title>a</title>"));
  EXPECT_EQ(errorOf(fromInput, 1, "subject\r\n"),
            "xdm: error: 'standard input' has no column 'isbn', which the model has");
}

TEST_F(DocumentRows, OfOneColumnMayBeEmptyLines) {
  std::string rows = csv("title\r\n\r\nx\r\n\"\"\r\n");
  Words counted = {"document", model, "--column", title, rows, "--processor-command", "cat {input}"};
  EXPECT_EQ(outputOf(counted),
            "<table><row><title></title></row>\n<row><title>x</title></row>\n<row><title></title></row>\n</table>");
}

TEST_F(DocumentRows, ThatTheProcessorRefusesAreNamed) {
  std::string rows = csv("subject,isbn,title\r\n");
  EXPECT_EQ(errorOf(words(rows, {"--processor-command", "false"})),
            "xdm: error: the XQuery processor false failed on " + rows + " (exit status 1)");
}

TEST_F(DocumentRows, MustMakeADocument) {
  std::string rows = csv("subject,isbn,title\r\n");
  const std::pair<const char*, const char*> cases[] = {{"", "line 1: no element found\n"},
                                                       {"sorry", "its answer is no XML; it begins: sorry\n"},
                                                       {"<a>", "line 1: no element found\n"}};
  for (const auto& [answer, reason] : cases) {
    ProcessResult result = xdm(words(rows, {"--processor-command", "printf '" + std::string(answer) + "'"}));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error,
              "xdm: error: the XQuery processor printf gave no document for the rows of " + rows + "\n" + reason);
  }
}

TEST_F(DocumentRows, OfARootThatDecidesTheRowAreOne) {
  Words counted = {"document", model, "--row", "/library", "--column", "/library/@city", csv("city\r\na\r\nb\r\n")};
  ProcessResult result = xdm(counted);
  EXPECT_EQ(documentIn(result.output), "<library city=\"a\"/>");
  EXPECT_EQ(result.error, "xdm: warning: " + counted.back() +
                              ": only the first row is used, since the root element decides the row\n");
  counted.back() = csv("city\r\na\r\n");
  EXPECT_EQ(documentIn(outputOf(counted)), "<library city=\"a\"/>");
}

TEST_F(DocumentRows, WithOtherColumnsAreToldBoth) {
  std::string rows = csv("subject;isbn;title\r\n");
  EXPECT_THAT(xdm(words(rows)).error, HasSubstr("\nits columns are: 'subject;isbn;title'\n"
                                                "those of the model are: 'subject', 'isbn', 'title'\n"));
}

TEST_F(DocumentRows, ThatAreNotThereFail) {
  EXPECT_EQ(errorOf(words(file("none"))), "xdm: error: cannot read '" + file("none") + "': No such file or directory");
}

}  // namespace

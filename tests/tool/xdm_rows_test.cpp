// Tests `xdm rows` in both processors: forms, documents of all kinds, collections, DTDs, other processors.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "tool.h"

namespace {

namespace fs = std::filesystem;

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char libraryCsv[] =
    "title,subject\r\n"
    "Mosses,Botany\r\n"
    "\"Trees, in winter\",Botany\r\n"
    "\"The \"\"Coasts\"\"\",Maps\r\n";

class RowsTest : public ToolTest {
 protected:
  Words words(const Words& documents, const Words& options = {}) const {
    Words all = {"rows", model, "--column", title, "--column", subject};
    all.insert(all.end(), options.begin(), options.end());
    all.push_back("--");
    all.insert(all.end(), documents.begin(), documents.end());
    return all;
  }

  std::string bookOf(const std::string& text, const std::string& prolog = "") const {
    return prolog + "<library><shelf><book><title>" + text + "</title></book></shelf></library>";
  }
};

/** What holds in each processor that the tool knows. */
class Rows : public RowsTest, public testing::WithParamInterface<const char*> {
 protected:
  Words in(const Words& documents, Words options = {}) const {
    options.insert(options.end(), {"--processor", GetParam()});
    return words(documents, options);
  }
};

INSTANTIATE_TEST_SUITE_P(Processors, Rows, testing::Values("saxon", "basex"),
                         [](const auto& info) { return std::string(info.param); });

TEST_P(Rows, AreCsvWithQuotesWhereNeeded) { EXPECT_EQ(outputOf(in({document})), libraryCsv); }

TEST_P(Rows, AreJson) {
  EXPECT_EQ(outputOf(in({document}, {"--format", "json"})),
            "[\n"
            "{\"title\": \"Mosses\", \"subject\": \"Botany\"},\n"
            "{\"title\": \"Trees, in winter\", \"subject\": \"Botany\"},\n"
            "{\"title\": \"The \\\"Coasts\\\"\", \"subject\": \"Maps\"}\n"
            "]\n");
}

TEST_P(Rows, AreXmlAsTheProcessorReturnedIt) {
  std::string one = write("one.xml", bookOf("x"));
  EXPECT_THAT(outputOf(in({one}, {"--format", "xml"})),
              testing::EndsWith("<table>\n<row><title>x</title><subject/>\n</row>\n</table>"));
}

TEST_P(Rows, OfSeveralDocumentsAreOneTable) {
  std::string one = write("one.xml", bookOf("x"));
  std::string two = write("two.xml", bookOf("y"));
  EXPECT_EQ(outputOf(in({two, one, two})), "title,subject\r\ny,\r\nx,\r\ny,\r\n");
  EXPECT_THAT(outputOf(in({two, one}, {"--format", "xml"})),
              testing::EndsWith("<table>\n<row><title>y</title><subject/>\n</row>\n"
                                "\n<row><title>x</title><subject/>\n</row>\n</table>"));
}

TEST_P(Rows, HaveAHeaderWithoutRowsToo) {
  std::string empty = write("empty.xml", "<library/>");
  EXPECT_EQ(outputOf(in({empty})), "title,subject\r\n");
  EXPECT_EQ(outputOf(in({empty}, {"--format", "json"})), "[]\n");
}

TEST_P(Rows, KeepWhiteSpaceAndLineEndsWhenAsked) {
  std::string spaced = write("spaced.xml", bookOf(" a\n  &#13;b "));
  EXPECT_EQ(outputOf(in({spaced}, {"--keep-whitespace"})), "title,subject\r\n\" a\n  \rb \",\r\n");
  EXPECT_EQ(outputOf(in({spaced})), "title,subject\r\na b,\r\n");
}

TEST_P(Rows, KeepWhiteSpaceBetweenElements) {
  std::string spaced = write("spaced.xml", "<library><shelf> <book/>\t<book/></shelf></library>");
  Words selected = {"rows",        model,      spaced,           "--row",
                    "/library",    "--column", "/library/shelf", "--keep-whitespace",
                    "--processor", GetParam()};
  EXPECT_EQ(outputOf(selected), "shelf\r\n \t\r\n");
  selected.push_back("--collection");
  EXPECT_EQ(outputOf(selected), "shelf\r\n \t\r\n");
}

TEST_P(Rows, JoinSeveralElementsInASequence) {
  std::string two = write("two.xml", "<library><shelf><book><title>a</title><title>b</title></book></shelf></library>");
  EXPECT_EQ(outputOf(in({two}, {"--sequence"})), "title,subject\r\nab,\r\n");
  EXPECT_EQ(xdm(in({two})).status, 1);
}

TEST_P(Rows, TakeColumnsOutsideTheRowAbsolutely) {
  std::string one = write("one.xml", R"(<library><shelf subject="s"><book><title>x</title></book></shelf></library>)");
  EXPECT_EQ(outputOf(in({one}, {"--absolute-lets"})), "title,subject\r\nx,s\r\n");
}

TEST_P(Rows, OfADefaultNamespaceAndAPrefix) {
  std::string qualified = write("q.xdm", R"(<xdm version="1.0"><element name="a" prefix="">
    <namespace prefix="" uri="urn:d"/><namespace prefix="p" uri="urn:p"/>
    <element name="r" prefix="" decides="true"><element name="v" prefix="p"/></element></element></xdm>)");
  std::string one = write("one.xml", R"(<a xmlns="urn:d" xmlns:q="urn:p"><r><q:v>x</q:v></r></a>)");
  EXPECT_EQ(outputOf({"rows", qualified, one, "--column", "/a/r/p:v=v", "--processor", GetParam()}), "v\r\nx\r\n");
}

TEST_P(Rows, OfFilesWithAnyName) {
  for (const char* name :
       {"-dash.xml", "a b.xml", "p%41#\xC3\xA9?.xml", "semi;,&+.xml", "[x]", "show", "bad\xFF.xml"}) {
    SCOPED_TRACE(name);
    fs::current_path(fs::path(document).parent_path());
    write(name, bookOf("x"));
    EXPECT_EQ(outputOf(in({name})), "title,subject\r\nx,\r\n");
    fs::current_path("/");
  }
}

TEST_P(Rows, OfFilesWithNamesOutsideTheLocale) {
  std::string name = write("\xC3\xA9\xE6\xBC\xA2.xml", bookOf("x"));
  EXPECT_EQ(xdm(in({name}), "", {{"LC_ALL", "C"}}).output, "title,subject\r\nx,\r\n");
}

TEST_P(Rows, OfStandardInputAndOfAPipe) {
  EXPECT_EQ(outputOf(in({"-"}), libraryXml), libraryCsv);
  ProcessResult piped = runProcess({"bash", "-c",
                                    "exec \"$0\" rows \"$1\" <(cat \"$2\") --processor \"$3\" "
                                    "--column /library/shelf/book/title --column /library/shelf/@subject",
                                    XDM_TOOL, model, document, GetParam()});
  EXPECT_EQ(piped.output, libraryCsv) << piped.error;
}

TEST_P(Rows, OfACollectionOfFilesKeepTheirOrder) {
  Words files;
  std::string expected = "title,subject\r\n";
  for (int number : {3, 1, 12, 7, 5, 2}) {
    files.push_back(
        write("doc" + std::to_string(number) + (number == 5 ? ".other" : ".xml"), bookOf(std::to_string(number))));
    expected += std::to_string(number) + ",\r\n";
  }
  EXPECT_EQ(outputOf(in(files, {"--collection"})), expected);
}

TEST_P(Rows, OfACollectionInAFolderAreSortedByName) {
  fs::create_directory(file("folder"));
  for (const char* name : {"b.xml", "a.xml", "c.xml", "d.txt"}) write(std::string("folder/") + name, bookOf(name));
  EXPECT_EQ(outputOf(in({file("folder")}, {"--collection"})), "title,subject\r\na.xml,\r\nb.xml,\r\nc.xml,\r\n");
}

TEST_P(Rows, ReadADocumentWithoutItsMissingDtdAndWarn) {
  std::string one = write("one.xml", bookOf("x", R"(<!DOCTYPE library SYSTEM "none/missing.dtd">)"));
  for (const Words& options : {Words{}, Words{"--dtd"}, Words{"--collection"}}) {
    ProcessResult result = xdm(in({one}, options));
    EXPECT_EQ(result.output, "title,subject\r\nx,\r\n");
    EXPECT_EQ(result.error, "xdm: warning: " + one + ": the DTD 'none/missing.dtd' is not read\n");
  }
}

TEST_P(Rows, ReadTheInternalSubset) {
  std::string one = write("one.xml", bookOf("&t;",
                                            "<!DOCTYPE library SYSTEM \"missing.dtd\" [<!ENTITY t \"told\">"
                                            "<!ATTLIST shelf subject CDATA \"given\">]>"));
  EXPECT_EQ(xdm(in({one})).output, "title,subject\r\ntold,given\r\n");
}

TEST_P(Rows, ReadALocalDtdOnlyWhenAsked) {
  write("lib.dtd", "<!ATTLIST shelf subject CDATA \"from the DTD\">");
  std::string one = write("one.xml", bookOf("x", R"(<!DOCTYPE library SYSTEM "lib.dtd">)"));
  EXPECT_EQ(xdm(in({one})).output, "title,subject\r\nx,\r\n");
  EXPECT_EQ(outputOf(in({one}, {"--dtd"})), "title,subject\r\nx,from the DTD\r\n");
  EXPECT_EQ(outputOf(in({one, one}, {"--dtd", "--collection"})),
            "title,subject\r\nx,from the DTD\r\nx,from the DTD\r\n");
}

TEST_P(Rows, OfADocumentOfAnotherVocabularyAreNoneWithAWarning) {
  std::string other = write("other.xml", "<shop/>");
  const std::string warning =
      "xdm: warning: " + other + ": no rows, since its root element is 'shop' and the model's is 'library'\n";
  for (const Words& options : {Words{}, Words{"--collection"}}) {
    ProcessResult result = xdm(in({other}, options));
    EXPECT_EQ(result.output, "title,subject\r\n");
    EXPECT_EQ(result.error, warning);
  }
  EXPECT_EQ(outputOf(in({write("empty.xml", "<library/>")})), "title,subject\r\n");
}

TEST_P(Rows, OfElementsThatRepeatFailWithAHint) {
  std::string two = write("two.xml", "<library><shelf><book><title>a</title><title>b</title></book></shelf></library>");
  const std::string hint = "A column may have met several elements in one row: --sequence allows that, ";
  ProcessResult result = xdm(in({two}));
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.error, HasSubstr(hint));
  EXPECT_THAT(result.error, HasSubstr("'xdm query' with the same model and options prints query.xq\n"));
}

TEST_P(Rows, NeverFetchFromTheNetwork) {
  // Nothing listens on port 9: a processor that tried would fail.
  std::string one = write("one.xml", bookOf("x", R"(<!DOCTYPE library SYSTEM "http://127.0.0.1:9/x.dtd">)"));
  ProcessResult result = xdm(in({one}, {"--dtd"}));
  EXPECT_EQ(result.output, "title,subject\r\nx,\r\n");
  EXPECT_THAT(result.error, HasSubstr("the DTD 'http://127.0.0.1:9/x.dtd' is not read"));
}

TEST_P(Rows, ReadNoFileThatAnEntityNames) {
  write("secret.txt", "SECRET");
  std::string one = write("one.xml", bookOf("&s;", R"(<!DOCTYPE library [<!ENTITY s SYSTEM "secret.txt">]>)"));
  ProcessResult result = xdm(in({one}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.error, AllOf(StartsWith("xdm: error: the XQuery processor "), Not(HasSubstr("SECRET")),
                                  HasSubstr("\nxdm: warning: " + one +
                                            ": the entity 's' 'secret.txt' is not read; --dtd reads it\n")));
  EXPECT_EQ(outputOf(in({one}, {"--dtd"})), "title,subject\r\nSECRET,\r\n");
}

TEST_P(Rows, IgnoreInclusions) {
  write("part.xml", "<title>part</title>");
  std::string include = R"(<xi:include xmlns:xi="http://www.w3.org/2001/XInclude" href="part.xml"/>)";
  std::string one = write("one.xml", "<library><shelf><book>" + include + "</book></shelf></library>");
  EXPECT_EQ(outputOf(in({one})), "title,subject\r\n,\r\n");
}

TEST_P(Rows, ShowTheErrorTextOfAProcessorThatFails) {
  std::string broken = write("broken.xml", "<library><shelf>");
  ProcessResult result = xdm(in({document, broken}));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_THAT(result.error, StartsWith(std::string("xdm: error: the XQuery processor ") + GetParam() + " failed on " +
                                       broken + " (exit status "));
  EXPECT_THAT(result.error, HasSubstr("must start and end within the same entity"));
}

TEST_P(Rows, OfAModelWithOneColumnQuoteAnEmptyValue) {
  std::string empty = write("empty.xml", bookOf(""));
  EXPECT_EQ(outputOf({"rows", model, empty, "--column", title, "--processor", GetParam()}), "title\r\n\"\"\r\n");
}

/** What does not depend on the processor. */
class RowsWithout : public RowsTest {};

TEST_F(RowsWithout, LosingWhiteSpaceThatADtdCallsIgnorable) {
  std::string shelf = "<library><shelf> <book/></shelf></library>";
  std::string spaced = write("spaced.xml", "<!DOCTYPE library [<!ELEMENT shelf (book)*>]>" + shelf);
  EXPECT_EQ(
      outputOf({"rows", model, spaced, "--column", "/library/shelf", "--keep-whitespace", "--processor", "saxon"}),
      "shelf\r\n \r\n");
}

TEST_F(RowsWithout, AnyProcessorNameThePackages) {
  ProcessResult result = xdm(words({document}), "", {{"PATH", "/none"}, {"JAVA_HOME", "/none"}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error,
            "xdm: error: no XQuery processor was found\n"
            "install the package default-jre-headless, and libsaxonhe-java (saxon) or basex (basex)\n");
}

TEST_F(RowsWithout, ADocumentThatIsThereFail) {
  EXPECT_EQ(errorOf(words({document, file("none.xml")})),
            "xdm: error: cannot read '" + file("none.xml") + "': No such file or directory");
  fs::create_directory(file("folder"));
  EXPECT_EQ(errorOf(words({file("folder")})), "xdm: error: cannot read '" + file("folder") + "': it is a folder");
  EXPECT_EQ(errorOf(words({file("folder")}, {"--collection"})),
            "xdm: error: the folder '" + file("folder") + "' holds no *.xml file");
}

/** Another processor, given as a command. */
class RowsOfACommand : public RowsTest {
 protected:
  Words given(const std::string& command, const Words& options = {}) const {
    Words all = options;
    all.insert(all.end(), {"--processor-command", command});
    return words({document}, all);
  }
};

TEST_F(RowsOfACommand, GetTheQueryAndTheInput) {
  std::string script =
      write("script", R"(test "$1" = "a  b" && grep -q 'for $row in' "$2" && test -s "${3#in=}" && cat "$4")");
  std::string rows =
      write("rows.xml", "<t:table xmlns:t='u'><t:row><title>x</title><subject>y</subject></t:row></t:table>");
  EXPECT_EQ(outputOf(given("sh " + script + " 'a  b' {query} in={input} " + rows)), "title,subject\r\nx,y\r\n");
}

TEST_F(RowsOfACommand, AreNotReadByAShell) {
  EXPECT_THAT(errorOf(given("echo $HOME;ls")), HasSubstr("gave no table of the rows"));
}

TEST_F(RowsOfACommand, ThatFailsSayHow) {
  EXPECT_EQ(errorOf(given("false")),
            "xdm: error: the XQuery processor false failed on " + document + " (exit status 1)");
  EXPECT_EQ(errorOf(given("sh -c 'kill -9 $$'")),
            "xdm: error: the XQuery processor sh failed on " + document + " (signal 9)");
  EXPECT_EQ(errorOf(given("no-such-program")), "xdm: error: cannot run 'no-such-program': No such file or directory");
}

TEST_F(RowsOfACommand, ThatMakesNoSenseAreWrongUsage) {
  EXPECT_EQ(errorOf(given(" "), 2), "xdm: error: --processor-command: the command is empty");
  EXPECT_EQ(errorOf(given("cat 'x"), 2), "xdm: error: --processor-command: a ' is never closed");
  EXPECT_EQ(errorOf(given("cat", {"--processor", "saxon"}), 2), "xdm: error: --processor excludes --processor-command");
}

TEST_F(RowsOfACommand, ThatAreNoTableOfTheColumnsFail) {
  struct {
    const char* answer;
    const char* why;
  } const cases[] = {
      {"<rows/>", "line 1: the element rows in the place of table"},
      {"<table>\n<line/></table>", "line 2: the element line in the place of row"},
      {"<table><row><title/></row></table>", "a row with 1 columns instead of 2"},
      {"<table><row><subject/><title/></row></table>", "a row with the column 'subject' in the place of 'title'"},
      {"<table><row><title><b/></title></row></table>", "line 1: an element inside column title"},
      {"<table><row>", "line 1: no element found"},
      {"", "line 1: no element found"},
  };
  for (const auto& one : cases) {
    ProcessResult result = xdm(given("cat " + write("answer", one.answer)));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.error,
              "xdm: error: the XQuery processor cat gave no table of the rows of " + document + "\n" + one.why + "\n");
  }
}

TEST_F(RowsOfACommand, DoNotMixWithTheRowBefore) {
  const std::string first = "<table><row><title>a title, long</title><subject>maps</subject></row>";
  std::string next = write("next", first + "<row><title/><subject>s</subject></row></table>");
  EXPECT_EQ(outputOf(given("cat " + next)), "title,subject\r\n\"a title, long\",maps\r\n,s\r\n");
  std::string shorter = write("shorter", first + "<row><title>b</title></row></table>");
  EXPECT_THAT(xdm(given("cat " + shorter)).error, testing::EndsWith("\na row with 1 columns instead of 2\n"));
}

TEST_F(RowsOfACommand, EscapeWhatJsonReserves) {
  std::string answer = write("answer",
                             "<table><row><title>\"a\" \\ b</title><subject>&#9;&#10;&#13;\x7F\xC3\xA9</subject></row>"
                             "</table>");
  EXPECT_EQ(outputOf(given("cat " + answer, {"--format", "json"})),
            "[\n{\"title\": \"\\\"a\\\" \\\\ b\", \"subject\": \"\\t\\n\\r\x7F\xC3\xA9\"}\n]\n");
}

TEST_F(RowsOfACommand, ThatAreOneTagAmongOthersAreOneTableAsXml) {
  std::string script = write("script",
                             "case $(cat \"$1\") in *x*) echo '<table><row><title>x</title><subject/></row></table>';;"
                             "*) echo '<table/>';; esac");
  std::string one = write("one.xml", bookOf("x"));
  std::string none = write("none.xml", "<library/>");
  Words options = {"--format", "xml", "--processor-command", "sh " + script + " {input}"};
  EXPECT_EQ(outputOf(words({none, one, none, one}, options)),
            "<table><row><title>x</title><subject/></row><row><title>x</title><subject/></row></table>\n");
  EXPECT_EQ(outputOf(words({none, none}, options)), "<table/>\n");
}

TEST_F(RowsOfACommand, OverACollectionGetAFolderOfIt) {
  std::string script = write("script",
                             "echo '<table><row><title>'; cat \"$1\"/* | tr -d '<>'; "
                             "echo '</title><subject/></row></table>'");
  std::string one = write("one.xml", "<one/>");
  std::string two = write("two.xml", "<two/>");
  EXPECT_EQ(outputOf(words({two, one}, {"--collection", "--processor-command", "sh " + script + " {input}"})),
            "title,subject\r\n\"\ntwo/one/\",\r\n");
}

/** The most memory that the tool uses over an answer with `rows` rows, in KiB. */
class Memory : public RowsTest {
 protected:
  std::string answerOf(int rows) const {
    std::ofstream answer(file("answer"));  // not held in memory, which a child would count as its own
    answer << "<table>";
    for (int i = 0; i < rows; ++i) answer << "<row><title>a title</title><subject>a subject</subject></row>";
    answer << "</table>";
    return file("answer");
  }

  long peakOf(const Words& arguments) const {
    pid_t child = fork();
    if (child == 0) {
      setenv("ASAN_OPTIONS", "quarantine_size_mb=1", 1);
      std::vector<char*> pointers = {const_cast<char*>(XDM_TOOL)};
      for (const std::string& word : arguments) pointers.push_back(const_cast<char*>(word.c_str()));
      pointers.push_back(nullptr);
      execv(XDM_TOOL, pointers.data());
      _exit(127);
    }
    int status = 0;
    struct rusage usage = {};
    EXPECT_EQ(wait4(child, &status, 0, &usage), child);
    EXPECT_EQ(status, 0);
    return usage.ru_maxrss;
  }

  long peakOver(int rows, const std::string& format) const {
    return peakOf(
        words({document}, {"--format", format, "-o", "/dev/null", "--processor-command", "cat " + answerOf(rows)}));
  }
};

TEST_F(Memory, DoesNotGrowWithTheNumberOfRows) {
  for (const char* format : {"csv", "json", "xml"}) {
    long small = peakOver(10, format);
    EXPECT_LT(peakOver(500'000, format), small + 8 * 1024) << format;
  }
}

TEST_F(RowsWithout, TemporaryFilesRemainNothing) {
  fs::create_directory(file("tmp"));
  for (const char* command : {"echo <table/>", "false"}) {
    xdm(words({"-"}, {"--processor-command", command}), libraryXml, {{"TMPDIR", file("tmp")}});
    EXPECT_TRUE(fs::is_empty(file("tmp"))) << command;
  }
}

TEST_F(RowsWithout, AnInterruptionLeavesNothing) {
  fs::create_directory(file("tmp"));
  std::string script = write("script", "kill -TERM $PPID; sleep 30");
  ProcessResult result = xdm(words({document}, {"--processor-command", "sh " + script}), "", {{"TMPDIR", file("tmp")}});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.error, "xdm: error: interrupted\n");
  EXPECT_TRUE(fs::is_empty(file("tmp")));
}

}  // namespace

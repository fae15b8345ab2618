// Tests the command line: help, wrong usage, exit status, standard streams.
#include "tool.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class Usage : public ToolTest {};

TEST_F(Usage, HelpIsPrintedForEveryCommand) {
  EXPECT_THAT(outputOf({"--help"}), HasSubstr("Usage: xdm [OPTIONS] SUBCOMMAND\n"));
  for (const char* command : {"tables", "show", "columns", "save", "rows", "document", "query"}) {
    EXPECT_THAT(outputOf({command, "--help"}), HasSubstr(std::string("Usage: xdm ") + command + " [OPTIONS] "));
  }
  EXPECT_THAT(outputOf({"query", "to-rows", "--help"}), HasSubstr("Usage: xdm query to-rows [OPTIONS] MODEL\n"));
  EXPECT_THAT(outputOf({"query", "from-rows", "--help"}), HasSubstr("Usage: xdm query from-rows [OPTIONS] MODEL\n"));
}

TEST_F(Usage, TheVersionIsThatOfTheLibrary) {
  EXPECT_EQ(outputOf({"--version"}), "XML Data Model version 1.6 (build 28)\n");
}

TEST_F(Usage, WrongUsageIsSaidWithTheUsageAndEndsWithTwo) {
  const struct {
    Words words;
    const char* error;
  } cases[] = {
      {{}, "A subcommand is required"},
      {{"query"}, "A subcommand is required"},
      {{"bogus"}, "there is no command 'bogus'; the commands are tables, show, columns, query, save, rows, document"},
      {{"query", "bogus"}, "there is no command 'bogus'; the commands are to-rows, from-rows"},
      {{"show"}, "MODEL is required"},
      {{"rows", "m"}, "DOCUMENT is required"},
      {{"show", "m", "--bogus"}, "The following argument was not expected: --bogus"},
      {{"rows", "--bogus"}, "The following argument was not expected: --bogus"},
      {{"show", "m", "n"}, "The following argument was not expected: n"},
      {{"show", "m", "--format", "csv"}, "The following argument was not expected: --format"},
      {{"columns", "m", "--format", "xml"}, "--format: xml not in {table,csv,json}"},
      {{"rows", "m", "d", "--processor", "other"}, "--processor: other not in {saxon,basex}"},
      {{"document", "m", "r", "s"}, "ROWS: At Most 1 required but received 2"},
      {{"show", "m", "-o"}, "--output: 1 required FILE missing"},
      {{"show", "m", "-o", ""}, "--output: the file has no name"},
      {{"show", "m", "--html", ""}, "--html: the file has no name"},
      {{"show", "m", "--column-xpath", "name"}, "--column-xpath: 'name' is not NAME=XPATH"},
      {{"rows", "-", "-"}, "standard input can be read only once"},
  };
  for (const auto& one : cases) {
    ProcessResult result = xdm(one.words);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, StartsWith(std::string("xdm: error: ") + one.error + "\n"));
    EXPECT_THAT(result.error, HasSubstr("\nUsage: xdm "));
  }
}

TEST_F(Usage, MapOptionsOnAnXdmDocumentAreWrong) {
  for (const Words& option : {Words{"--table", "t"}, Words{"--group-by", ""}, Words{"--retain"},
                              Words{"--accept-output"}, Words{"--heading"}}) {
    Words words = {"show", model};
    words.insert(words.end(), option.begin(), option.end());
    EXPECT_THAT(errorOf(words, 2), HasSubstr("is an XDM document"));
    words[1] = "-";
    EXPECT_THAT(errorOf(words, 2, libraryXdm), HasSubstr("is an XDM document"));
  }
}

TEST_F(Usage, WhatCannotBeLoadedIsTheLibrarysFailure) {
  EXPECT_THAT(errorOf({"show", file("none")}), StartsWith("xdm: error: XDM1428: "));
  EXPECT_THAT(errorOf({"show", file("none"), "--table", "t"}), StartsWith("xdm: error: XDM1428: "));
  EXPECT_THAT(errorOf({"show", file(".")}), StartsWith("xdm: error: XDM1428: "));
  EXPECT_THAT(errorOf({"show", write("empty", "")}), StartsWith("xdm: error: XDM1428: "));
  EXPECT_THAT(errorOf({"show", document}), StartsWith("xdm: error: XDM1425: "));
  EXPECT_THAT(errorOf({"show", "-"}, 1, "<xdm"), StartsWith("xdm: error: XDM1429: "));
  EXPECT_THAT(errorOf({"show", "-"}, 1, R"(<ROWMAPS version="1.9"/>)"), StartsWith("xdm: error: XDM1425: "));
}

TEST_F(Usage, WhatCannotBeLoadedIsNamedWithTheReason) {
  const struct {
    Words words;
    std::string input;
    std::string line;
  } cases[] = {
      {{"show", file("none")}, "", file("none") + ": No such file or directory"},
      {{"show", write("cut", "<xdm>\n<element")}, "", file("cut") + ": line 2, column 9: "},
      {{"show", write("nameless", "<xdm version='1.0'><element/></xdm>")}, "", "in " + file("nameless")},
      {{"show", document}, "", document + " has the root element 'library'; that of an XDM document is 'xdm', "},
      {{"show", "-"}, "<xdm", "standard input: line 1, column 5: "},
      {{"show", "-"}, "<ROWMAPS version='1.9'/>", "an XMLMap is given as a file; standard input is read as an XDM "},
      {{"show", "/dev/null"}, "", "/dev/null: line 1, column 1: "},
      {{"show", model, "--column", title, "--column-xpath", "title=/library/x"}, "", "--column-xpath title=/library/x"},
  };
  for (const auto& one : cases) {
    std::string error = xdm(one.words, one.input).error;
    EXPECT_THAT(error.substr(error.find('\n') + 1), StartsWith(one.line));
  }
}

TEST_F(Usage, AModelThatIsNoFileIsCalledAsTheUserCallsIt) {
  EXPECT_THAT(errorOf({"show", "/dev/null"}), HasSubstr("The XDM document \"/dev/null\" could not be read"));
}

TEST_F(Usage, TheModelMayStandOnStandardInput) {
  EXPECT_EQ(outputOf({"show", "-"}, libraryXdm), outputOf({"show", model}));
}

TEST_F(Usage, ANodeThatIsNotThereIsAFailureInTheToolsWords) {
  EXPECT_EQ(errorOf({"show", model, "--row", "/library/x"}),
            "xdm: error: --row: the model has no element with the XPath '/library/x'");
  EXPECT_EQ(errorOf({"show", model, "--row", isbn}),
            "xdm: error: --row: the model has no element with the XPath '" + isbn + "'");
  EXPECT_EQ(errorOf({"show", model, "--column", title + "[1]"}),
            "xdm: error: --column: the model has no node with the XPath '" + title + "[1]'");
  EXPECT_EQ(errorOf({"show", model, "--group-column", ""}),
            "xdm: error: --group-column: the model has no node with the XPath ''");
  EXPECT_EQ(errorOf({"show", model, "--column-xpath", "c=/library"}),
            "xdm: error: --column-xpath: the model has no column 'c'");
}

TEST_F(Usage, ARefusedColumnIsAFailureInTheToolsWords) {
  EXPECT_EQ(errorOf({"show", model, "--column", title + "=a", "--column", isbn + "=a"}),
            "xdm: error: --column: '" + isbn +
                "' could not be selected as column 'a'; usually another column has that "
                "name");
}

TEST_F(Usage, ARefusedXPathIsTheLibrarysFailure) {
  EXPECT_THAT(errorOf({"show", model, "--column", title, "--column-xpath", "title=/library/none"}),
              StartsWith("xdm: error: XDM1445: "));
}

TEST_F(Usage, AValueInBracketsIsTakenAsItIs) {
  EXPECT_EQ(errorOf({"show", model, "--row", "[x]"}),
            "xdm: error: --row: the model has no element with the XPath '[x]'");
  EXPECT_EQ(errorOf({"query", "to-rows", "--column-xpath", "[c]=/library[1]", model}),
            "xdm: error: --column-xpath: the model has no column '[c]'");
}

TEST_F(Usage, TheOutputMayBeStandardOutput) {
  EXPECT_EQ(outputOf({"show", model, "-o", "-"}), outputOf({"show", model}));
}

TEST_F(Usage, TheLastOfTwoValuesCounts) {
  EXPECT_EQ(outputOf({"columns", model, "--format", "csv", "--format", "json"}), "[]\n");
}

TEST_F(Usage, AFileNameMayLookLikeAnOption) {
  write("-m", libraryXdm);
  ProcessResult result = runProcess({"sh", "-c", "cd \"$1\" && exec \"$0\" show -- -m", XDM_TOOL, file(".")});
  EXPECT_EQ(result.output, outputOf({"show", model})) << result.error;
}

TEST_F(Usage, AFailureWritesNoFile) {
  writeFile(file("out"), "old");
  EXPECT_EQ(errorOf({"query", "to-rows", model, "-o", file("out")}).substr(0, 12), "xdm: error: ");
  EXPECT_EQ(readFile(file("out")), "old");
  EXPECT_EQ(xdm({"query", "to-rows", model, "-o", file("new")}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(file("new")));
}

TEST_F(Usage, AFullOrClosedStandardOutputIsAFailure) {
  const std::pair<const char*, const char*> cases[] = {{">/dev/full", "No space left on device"},
                                                       {">&-", "Bad file descriptor"}};
  for (const auto& [redirection, reason] : cases) {
    for (const std::string words : {"show \"$1\" ", "--help ", "--version "}) {
      ProcessResult result = runProcess({"sh", "-c", "exec \"$0\" " + words + redirection, XDM_TOOL, model});
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.error, std::string("xdm: error: cannot write standard output: ") + reason + "\n");
    }
  }
}

TEST_F(Usage, ABrokenPipeIsAFailureAndNoCrash) {
  ProcessResult result =
      runProcess({"bash", "-c", "{ sleep 0.2; \"$0\" show \"$1\"; echo $? >&2; } | true", XDM_TOOL, model});
  EXPECT_EQ(result.error, "xdm: error: cannot write standard output: Broken pipe\n1\n");
}

TEST_F(Usage, LineEndsInAMessageAreBlanks) {
  EXPECT_EQ(errorOf({"show", model, "--row", "a\nb"}),
            "xdm: error: --row: the model has no element with the XPath 'a b'");
}

}  // namespace

// Tests what a person at a terminal sees while work lasts, and --quiet.
#include "tool.h"

namespace {

using testing::HasSubstr;

class Progress : public ToolTest {
 protected:
  // A processor that takes its time.
  const std::string processor =
      "sh " + write("slow.sh", "sleep 3.5; echo '<table><row><title>T</title></row></table>'") + " {query} {input}";

  Words rows() const { return {"rows", model, document, "--column", title, "--processor-command", processor}; }

  /** What a terminal gets from the tool, which prints its rows to a file. */
  std::string onTerminal(const Words& more, const Environment& environment = {{"TERM", "xterm"}}) const {
    Words words = rows();
    words.insert(words.end(), {"-o", file("rows.csv")});
    words.insert(words.end(), more.begin(), more.end());
    std::string line = "'" XDM_TOOL "'";
    for (const std::string& word : words) line += " '" + word + "'";
    ProcessResult result = runProcess({"env", "-u", "NO_COLOR", "script", "-qec", line, "/dev/null"}, "", environment);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(readFile(file("rows.csv")), "title\r\nT\r\n");
    return result.output;
  }
};

TEST_F(Progress, TellsOfLongWorkAndTakesTheLineBack) {
  std::string shown = onTerminal({});
  EXPECT_THAT(shown, HasSubstr("\r\033[Kxdm: running sh on "));
  EXPECT_THAT(shown, HasSubstr(" (2 s)"));
  EXPECT_THAT(shown, HasSubstr(" (3 s)"));
  EXPECT_THAT(shown, testing::EndsWith("\r\033[K"));
}

TEST_F(Progress, IsNotShownWhenNobodyWantsIt) {
  EXPECT_EQ(onTerminal({"--quiet"}), "");
  EXPECT_EQ(onTerminal({}, {{"TERM", "dumb"}}), "");
}

TEST_F(Progress, IsNotShownWhereColourIsNot) {
  Words words = {"env",
                 "NO_COLOR=1",
                 "TERM=xterm",
                 "script",
                 "-qec",
                 "'" XDM_TOOL "' rows '" + model + "' '" + document + "' --column " + title + " --processor-command '" +
                     processor + "'",
                 "/dev/null"};
  EXPECT_EQ(runProcess(words).output, "title\r\r\nT\r\r\n");
}

TEST_F(Progress, IsNotShownWithoutATerminal) { EXPECT_EQ(outputOf(rows()), "title\r\nT\r\n"); }

TEST_F(Progress, AndWarningsAreLeftOutByQuiet) {
  std::string warned = write("dtd.xml", "<!DOCTYPE library SYSTEM 'none.dtd'>" + readFile(document));
  Words words = {"rows", model, warned, "--column", title};
  EXPECT_THAT(xdm(words).error, testing::StartsWith("xdm: warning: "));
  words.push_back("--quiet");
  EXPECT_EQ(xdm(words).error, "");
}

TEST_F(Progress, ErrorsAreToldInAnyCase) {
  EXPECT_THAT(errorOf({"query", "to-rows", model, "--quiet"}), testing::StartsWith("xdm: error: XDM1441: "));
}

}  // namespace

// Tests the completion of the command line in bash and in zsh.
#include <filesystem>

#include "tool.h"

namespace {

constexpr char completions[] = KVXDM_SOURCE_DIR "/tools/xdm/completion";

class Completion : public ToolTest {
 protected:
  void SetUp() override {
    write("map.xml", R"(<ROWMAPS version="1.9"><TABLE name="first"/><TABLE name="second one"/></ROWMAPS>)");
  }

  std::string folder() const { return std::filesystem::path(model).parent_path(); }

  /** What bash offers for the last of `words`, one a line. */
  std::string offered(const Words& words) const {
    Words command = {"bash", "-c", R"(
compopt() { :; }  # works in a real completion only
source "$1/xdm.bash"; tool=$2; cd "$3"; shift 3
COMP_WORDS=(xdm "$@") COMP_CWORD=$#
_xdm "$tool" "${COMP_WORDS[-1]}" "${COMP_WORDS[-2]}"
printf '%s\n' "${COMPREPLY[@]}")", "bash", completions, XDM_TOOL, folder()};
    command.insert(command.end(), words.begin(), words.end());
    ProcessResult result = runProcess(command);
    EXPECT_EQ(result.error, "");
    return result.output;
  }

  /** What a person at a terminal with `shell` sees who types `line`. */
  std::string typed(const std::string& shell, const std::string& line) const {
    std::string tool = std::filesystem::path(XDM_TOOL).parent_path();
    return runProcess({"script", "-qec", shell, "/dev/null"}, line,
                      {{"PATH", tool + ":" + std::getenv("PATH")}, {"TERM", "dumb"}})
        .output;
  }
};

TEST_F(Completion, OffersCommands) {
  EXPECT_EQ(offered({"s"}), "show\nsave\n");
  EXPECT_EQ(offered({"query", ""}), "to-rows\nfrom-rows\n");
}

TEST_F(Completion, OffersTheOptionsOfTheCommand) {
  EXPECT_EQ(offered({"query", "to-rows", "--s"}), "--streaming-option\n--sequence\n");
  EXPECT_EQ(offered({"show", "map.xml", "--h"}), "--help\n--html\n--heading\n");
  EXPECT_EQ(offered({"--"}), "--help\n--version\n");
}

TEST_F(Completion, OffersTheValuesOfAnOption) {
  EXPECT_EQ(offered({"rows", "map.xml", "--format", ""}), "csv\njson\nxml\n");
  EXPECT_EQ(offered({"columns", "map.xml", "--format", ""}), "table\ncsv\njson\n");
  EXPECT_EQ(offered({"rows", "--processor", "b"}), "basex\n");
  EXPECT_EQ(offered({"show", "--row", ""}), "\n");
}

TEST_F(Completion, OffersTheTablesOfTheMap) {
  EXPECT_EQ(offered({"show", "map.xml", "--table", ""}), "first\nsecond\\ one\n");
  EXPECT_EQ(offered({"show", "map.xml", "--table", "second\\ "}), "second\\ one\n");
  EXPECT_EQ(offered({"show", "--table", ""}), "\n");
}

TEST_F(Completion, TakesWhatATableIsCalledForNothingElse) {
  write("odd.xml", R"x(<ROWMAPS version="1.9"><TABLE name="$(touch made)"/><TABLE name="it's *"/></ROWMAPS>)x");
  EXPECT_EQ(offered({"show", "odd.xml", "--table", ""}), "\\$\\(touch\\ made\\)\nit\\'s\\ \\*\n");
  EXPECT_EQ(offered({"show", "odd.xml", "--table", "it"}), "it\\'s\\ \\*\n");
  EXPECT_FALSE(std::filesystem::exists(file("made")));
}

TEST_F(Completion, OffersFiles) {
  EXPECT_EQ(offered({"show", "ma"}), "map.xml\n");
  EXPECT_EQ(offered({"show", "--html", "ma"}), "map.xml\n");
}

TEST_F(Completion, WorksInBash) {
  std::string line =
      "cd '" + folder() + "'; source " + completions + "/xdm.bash\n" + "xdm colu\t--form\tjs\tlibrary.xd\t; exit\n";
  EXPECT_THAT(typed("bash --norc --noprofile -i", line), testing::HasSubstr("\n[]\r\n"));
}

TEST_F(Completion, QuotesWhatTheShellWouldExpand) {
  write("odd.xml", R"x(<ROWMAPS version="1.9"><TABLE name="$(touch made) it's"/></ROWMAPS>)x");
  std::string line =
      "cd '" + folder() + "'; source " + completions + "/xdm.bash\n" + "xdm show odd.xml --table \t; exit\n";
  EXPECT_THAT(typed("bash --norc --noprofile -i", line),
              testing::HasSubstr("gives no columns for the table \"$(touch made) it's\""));
  EXPECT_FALSE(std::filesystem::exists(file("made")));
}

TEST_F(Completion, WorksInZsh) {
  std::string line = "cd '" + folder() + "'; fpath=(" + completions +
                     " $fpath); autoload -Uz compinit; compinit -u -D\n" + "xdm colu\t--form\tjs\tlibrary.xd\t; exit\n";
  EXPECT_THAT(typed("zsh -f -i", line), testing::HasSubstr("\n[]\r\n"));
}

}  // namespace

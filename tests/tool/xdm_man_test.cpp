// Tests the manual page against the help, and with the programs that show it.
#include <algorithm>
#include <regex>

#include "tool.h"

namespace {

class Man : public ToolTest {
 protected:
  static std::vector<std::string> optionsIn(const std::string& help) {
    std::vector<std::string> names;
    std::regex option("\n  (?:-., ?|-.,)?(--[a-z-]+)");
    for (std::sregex_iterator found(help.begin(), help.end(), option), end; found != end; ++found) {
      names.push_back((*found)[1]);
    }
    return names;
  }

  /** The part of the page, as plain text, that is about `command`. */
  static std::string sectionOf(const std::string& command) {
    std::string page = outputOf({"--man-page"});
    page.erase(std::remove(page.begin(), page.end(), '\\'), page.end());
    std::size_t begin = page.find(".SS xdm " + command + "\n");
    EXPECT_NE(begin, std::string::npos) << command;
    return page.substr(begin, page.find("\n.S", begin) - begin);
  }
};

TEST_F(Man, NamesEveryOptionOfEveryCommand) {
  for (const std::string command :
       {"tables", "show", "columns", "query to-rows", "query from-rows", "save", "rows", "document"}) {
    std::string help = outputOf(command.starts_with("query ") ? Words{"query", command.substr(6), "--help"}
                                                              : Words{command, "--help"});
    std::vector<std::string> options = optionsIn(help);
    EXPECT_GE(options.size(), 3u) << command;
    for (const std::string& option : options) {
      EXPECT_THAT(sectionOf(command), testing::HasSubstr("fB" + option + "fR")) << command;
    }
  }
}

TEST_F(Man, HasNoPlaceForTheOptionThatMakesIt) {
  EXPECT_THAT(outputOf({"--man-page"}), testing::Not(testing::HasSubstr("man\\-page")));
  EXPECT_THAT(outputOf({"--help"}), testing::Not(testing::HasSubstr("--man-page")));
}

TEST_F(Man, IsShownWithoutAWarning) {
  std::string page = write("xdm.1", outputOf({"--man-page"}));
  ProcessResult shown = runProcess({"man", "--warnings", "-E", "ascii", "-l", page}, "", {{"MANWIDTH", "100"}});
  EXPECT_EQ(shown.status, 0);
  EXPECT_EQ(shown.error, "");
  EXPECT_THAT(shown.output, testing::HasSubstr("xdm rows [OPTION]... MODEL DOCUMENT..."));
  EXPECT_THAT(shown.output, testing::HasSubstr("'-' for an XDM document"));
}

}  // namespace

// Tests what docs/scaling.md promises: one query serves any number of documents, however they are spread out.
#include <filesystem>

#include "tool.h"

namespace {

using testing::HasSubstr;

constexpr int documentCount = 6;

class Scaling : public ToolTest {
 protected:
  Scaling() {
    std::filesystem::create_directory(folder);
    for (int number = 1; number <= documentCount; ++number) write(nameOf(number), library(number));
  }

  static std::string nameOf(int number) { return "folder/" + std::to_string(number) + ".xml"; }

  static std::string library(int number) {
    std::string digit = std::to_string(number);
    return "<library><shelf><book isbn='" + digit + "'><title>Title " + digit + "</title></book></shelf></library>";
  }

  Words rows(const Words& documents, const Words& options = {}) const {
    Words words = {"rows", model, "--column", isbn, "--column", title};
    words.insert(words.end(), options.begin(), options.end());
    words.insert(words.end(), documents.begin(), documents.end());
    return words;
  }

  /** Runs BaseX with a home of its own; `words` are its options and its query or commands. */
  std::string basex(const Words& words) const {
    Words command = {"java", "-Dorg.basex.path=" + file("basex"), "-Dorg.basex.textindex=false",
                     "-cp",  "/usr/share/java/basex.jar",         "org.basex.BaseX"};
    command.insert(command.end(), words.begin(), words.end());
    ProcessResult result = runProcess(command);
    EXPECT_EQ(result.status, 0) << result.error;
    return result.output;
  }

  const std::string folder = file("folder");
  const std::string expected =
      "isbn,title\r\n1,Title 1\r\n2,Title 2\r\n3,Title 3\r\n4,Title 4\r\n5,Title 5\r\n6,Title 6\r\n";
};

TEST_F(Scaling, OneQueryServesAFolder) {
  EXPECT_EQ(outputOf(rows({folder}, {"--collection", "--processor", "saxon"})), expected);
  EXPECT_EQ(outputOf(rows({folder}, {"--collection", "--processor", "basex"})), expected);
}

TEST_F(Scaling, OneDocumentAfterTheOtherGivesTheSameRows) {
  Words documents;
  for (int number = 1; number <= documentCount; ++number) documents.push_back(file(nameOf(number)));
  EXPECT_EQ(outputOf(rows(documents)), expected);
}

TEST_F(Scaling, OneQueryServesADatabase) {
  std::filesystem::create_directory(file("basex"));
  basex({"-c", "CREATE DB books " + folder});
  std::string query =
      write("query.xq", xdm({"query", "to-rows", model, "--collection", "--column", isbn, "--column", title}, "",
                            {{"KVX_OPTIONS", "Bench"}})
                            .output);
  std::string table = basex({"-w", "-sindent=no", "-bKV_BENCH=books", query});
  for (int number = 1; number <= documentCount; ++number) {
    std::string digit = std::to_string(number);
    EXPECT_THAT(table, HasSubstr("<row><isbn>" + digit + "</isbn><title>Title " + digit + "</title>"));
  }
  basex({"-c", "DROP DB books"});
  EXPECT_THAT(basex({"-c", "LIST"}), testing::Not(HasSubstr("books")));
}

TEST_F(Scaling, WorkersShareTheDocuments) {
  ProcessResult result = runProcess(
      {"bash", "-c", R"(
cd "$1"; tool=$2 model=$3; shift 3
printf '%s\n' folder/*.xml |
  parallel --will-cite --keep-order --max-procs 2 --max-args 2 "$tool" rows "$model" "$@" |
  awk 'NR == 1 || !/^isbn,/')",
       "bash", std::filesystem::path(folder).parent_path(), XDM_TOOL, model, "--column", isbn, "--column", title},
      "", {{"HOME", file("home")}});
  EXPECT_EQ(result.error, "");
  EXPECT_EQ(result.output, expected);
}

}  // namespace

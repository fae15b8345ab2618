// Tests what the shared objects show to a linker: their symbols, their names and what they need.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "process.h"
#include "temporary.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

/** The names of the symbols that `library` exports, in order. */
std::vector<std::string> exportedSymbols(const char* library) {
  std::vector<std::string> names;
  for (const std::string& line : linesOf(runProcess({"nm", "-D", "--defined-only", library}).output)) {
    names.push_back(line.substr(line.rfind(' ') + 1));
  }
  std::sort(names.begin(), names.end());
  return names;
}

/** What stands in brackets in the entries of kind `tag` of the dynamic section. */
std::vector<std::string> dynamicEntries(const char* library, const std::string& tag) {
  std::vector<std::string> entries;
  for (const std::string& line : linesOf(runProcess({"readelf", "-d", library}, {}, {{"LC_ALL", "C"}}).output)) {
    if (line.find("(" + tag + ")") == std::string::npos) continue;
    std::string::size_type open = line.find('[') + 1;
    entries.push_back(line.substr(open, line.find(']') - open));
  }
  return entries;
}

TEST(ExportedSymbols, AreThoseOfTheCommittedList) {
  EXPECT_EQ(exportedSymbols(KVXDM_LIBRARY),
            linesOf(readFile(KVXDM_SOURCE_DIR "/tests/interface/exported_symbols.txt")));
}

TEST(SharedObjects, CarryTheMajorVersionInTheirNames) {
  EXPECT_THAT(dynamicEntries(KVXDM_LIBRARY, "SONAME"), ElementsAre("libkvxdm.so.1"));
  EXPECT_THAT(dynamicEntries(KVXBASE_LIBRARY, "SONAME"), ElementsAre("libkvxbase.so.1"));
  EXPECT_THAT(dynamicEntries(KVXDOM_LIBRARY, "SONAME"), ElementsAre("libkvxdom.so.1"));
  EXPECT_THAT(dynamicEntries(KVXLOG_LIBRARY, "SONAME"), ElementsAre("libkvxlog.so.1"));
}

TEST(SharedObjects, ReachTheXmlParserOnlyThroughTheDomService) {
  for (const char* library : {KVXDM_LIBRARY, KVXBASE_LIBRARY, KVXLOG_LIBRARY}) {
    EXPECT_THAT(dynamicEntries(library, "NEEDED"), Not(Contains(HasSubstr("xerces")))) << library;
  }
  EXPECT_THAT(dynamicEntries(KVXDOM_LIBRARY, "NEEDED"), Contains(HasSubstr("xerces")));
}

TEST(SharedObjects, OfTheLibraryNeedsTheThreeBaseServices) {
  EXPECT_THAT(dynamicEntries(KVXDM_LIBRARY, "NEEDED"), Contains("libkvxbase.so.1"));
  EXPECT_THAT(dynamicEntries(KVXDM_LIBRARY, "NEEDED"), Contains("libkvxdom.so.1"));
  EXPECT_THAT(dynamicEntries(KVXDM_LIBRARY, "NEEDED"), Contains("libkvxlog.so.1"));
}

}  // namespace

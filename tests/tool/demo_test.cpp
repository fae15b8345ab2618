// Tests scripts/demo: what it prints of the real document is what a reader without maps and queries finds there.
#include <gmock/gmock.h>

#include <pugixml.hpp>

#include "sample_rows.h"
#include "tool.h"

namespace {

/** A row of the demonstration as a line; none of its first values needs quotes. */
std::string lineOf(const Row& row) {
  std::string line;
  for (const char* column : {"windows", "territory", "tzid", "type_version", "cldr_revision"}) {
    for (const auto& [name, value] : row) {
      if (name == column) line += (line.empty() ? "" : ",") + value;
    }
  }
  return line + "\n";
}

TEST(Demo, ShowsTheRowsOfTheDocumentAndTheWayBack) {
  pugi::xml_document document;
  ASSERT_TRUE(document.load_file(sample::windowsZones));
  const Rows rows = sample::zones(document.document_element());
  ASSERT_GT(rows.size(), 14U);
  std::string expected = "other,territory,type,type_version,number\n";
  for (int i = 0; i < 14; ++i) expected += lineOf(rows[static_cast<std::size_t>(i)]);

  const ProcessResult result = runProcess({KVXDM_SOURCE_DIR "/scripts/demo"}, "", {{"XDM", XDM_TOOL}});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_THAT(result.output, testing::HasSubstr(expected));
  EXPECT_THAT(result.output, testing::HasSubstr(std::to_string(rows.size()) + " rows in all"));
  EXPECT_THAT(result.output, testing::HasSubstr("Its rows are the same, byte for byte."));
}

}  // namespace

// Tests `xdm rows` on real documents from Debian packages: each table of the maps in tests/maps, in both processors,
// with and without grouping, against the rows that a reader without maps and queries finds.
#include <algorithm>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <tuple>

#include "sample_rows.h"
#include "tool.h"

namespace {

struct Table {
  const char* map;
  const char* name;
  const char* document;
  Rows (*read)(pugi::xml_node root);
  const char* groupBy;
};

const Table tables[] = {
    {"windows-zones", "zones", sample::windowsZones, sample::zones, "a=type_version b=windows"},
    {"windows-zones", "releases", sample::windowsZones, sample::releases, "a=type_version"},
    {"validators-19", "units", sample::validators, sample::units, "a=source_lang b=target_lang"},
    {"validators-21", "units", sample::validators, sample::units, "a=original"},
    {"service-providers", "countries", sample::serviceProviders, sample::countries, "first=code"},
    {"service-providers", "providers", sample::serviceProviders, sample::providers,
     "first=\"country\" second=\"provider\""},
    {"service-providers", "apns", sample::serviceProviders, sample::accessPoints,
     "first=\"country\" second=\"provider\""},
    {"service-providers", "networks", sample::serviceProviders, sample::networks, "first=\"provider\""},
};

Rows rowsOfJson(const std::string& text) {
  Rows rows;
  for (const auto& object : nlohmann::ordered_json::parse(text)) {
    Row& row = rows.emplace_back();
    for (const auto& [name, value] : object.items()) row.emplace_back(name, value.get<std::string>());
  }
  return rows;
}

Rows expectedRows(const char* document, Rows (*read)(pugi::xml_node)) {
  pugi::xml_document parsed;
  if (!parsed.load_file(document, pugi::parse_default | pugi::parse_ws_pcdata)) {
    ADD_FAILURE() << document << " comes from a Debian package";
  }
  return read(parsed.document_element());
}

void expectRows(const Words& words, const Rows& expected) {
  Words command = {XDM_TOOL};
  command.insert(command.end(), words.begin(), words.end());
  ProcessResult result = runProcess(command);
  ASSERT_EQ(result.status, 0) << result.error;
  Rows rows = rowsOfJson(result.output);
  ASSERT_EQ(rows.size(), expected.size());
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i], expected[i]) << "row " << i;
}

class Sample : public testing::TestWithParam<std::tuple<Table, const char*>> {};

TEST_P(Sample, GivesItsRowsWithAndWithoutGrouping) {
  const auto& [table, processor] = GetParam();
  Rows expected = expectedRows(table.document, table.read);
  std::string map = KVXDM_SOURCE_DIR "/tests/maps/" + std::string(table.map) + ".xml";
  for (const Words& options : {Words{}, Words{"--retain"}, Words{"--group-by", table.groupBy}}) {
    Words words = {"rows", map, table.document, "--table", table.name, "--format", "json", "--processor", processor};
    words.insert(words.end(), options.begin(), options.end());
    expectRows(words, expected);
  }
}

std::string nameOfSample(const testing::TestParamInfo<Sample::ParamType>& info) {
  const auto& [table, processor] = info.param;
  std::string name = std::string(table.map) + "_" + table.name + "_" + processor;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Tables, Sample, testing::Combine(testing::ValuesIn(tables), testing::Values("saxon", "basex")),
                         nameOfSample);

/** The model of the demonstration, an XDM document. */
class WindowsZones : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Processors, WindowsZones, testing::Values("saxon", "basex"),
                         [](const auto& info) { return std::string(info.param); });

TEST_P(WindowsZones, GiveTheirRowsByAnXdmDocument) {
  const std::string zones = "/supplementalData/windowsZones/mapTimezones";
  for (const Words& options : {Words{}, Words{"--collection"}, Words{"--absolute-lets"}}) {
    Words words = {"rows",
                   KVXDM_SOURCE_DIR "/examples/windows-zones.xdm",
                   sample::windowsZones,
                   "--column",
                   zones + "/@typeVersion=type_version",
                   "--column",
                   "/supplementalData/version/@number=cldr_revision",
                   "--column",
                   zones + "/mapZone/@other=windows",
                   "--column",
                   zones + "/mapZone/@territory",
                   "--column",
                   zones + "/mapZone/@type=tzid",
                   "--format",
                   "json",
                   "--processor",
                   GetParam()};
    words.insert(words.end(), options.begin(), options.end());
    expectRows(words, expectedRows(sample::windowsZones, sample::zones));
  }
}

}  // namespace

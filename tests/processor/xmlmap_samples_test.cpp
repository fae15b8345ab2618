// Imports each table of the maps in tests/maps, runs its query over the real document in each processor, and compares
// the rows with those that a reader without maps and queries finds. The documents come from the Debian packages
// unicode-cldr-core, php-symfony-validator and mobile-broadband-provider-info.
#include <gtest/gtest.h>

#include <map>
#include <pugixml.hpp>

#include "sample_rows.h"
#include "xmlmap.h"
#include "xquery.h"

namespace {

constexpr unsigned retain = 0x80000000;
constexpr unsigned heading = 0x20000000;

/** A way to import a table, and the columns with their group levels that must come of it. */
struct Variant {
  const char* groupBy;
  unsigned flags;
  const char* columns;
};

struct Sample {
  const char* map;
  const char* table;
  const char* document;
  Rows (*read)(pugi::xml_node root);
  std::vector<Variant> variants;
};

const Sample samples[] = {
    {"windows-zones",
     "zones",
     sample::windowsZones,
     sample::zones,
     {{"", 0, "type_version cldr_revision windows territory tzid"},
      {"", retain, "type_version:1 cldr_revision windows territory tzid"},
      {"a=type_version b=windows", retain, "type_version:2 cldr_revision windows:1 territory tzid"}}},
    {"windows-zones",
     "releases",
     sample::windowsZones,
     sample::releases,
     {{"", 0, "other_version type_version"}, {"", retain, "other_version type_version"}}},
    {"validators-19",
     "units",
     sample::validators,
     sample::units,
     {{"", 0, "source_lang target_lang original id resname source target state"},
      {"", retain | heading, "source_lang:2 target_lang:2 original id resname source target state"},
      {"a=original", 0, "source_lang target_lang original:1 id resname source target state"}}},
    {"validators-21",
     "units",
     sample::validators,
     sample::units,
     {{"", 0, "source_lang target_lang original id resname source target state"},
      {"", retain, "source_lang:2 target_lang:2 original id resname source target state"},
      {"a=original", 0, "source_lang target_lang original:1 id resname source target state"}}},
    {"service-providers",
     "countries",
     sample::serviceProviders,
     sample::countries,
     {{"", 0, "code name"}, {"", retain, "code name"}, {"first=code", 0, "code:1 name"}}},
    {"service-providers",
     "providers",
     sample::serviceProviders,
     sample::providers,
     {{"", 0, "country country_name name name_local primary"},
      {"", retain, "country:1 country_name name name_local primary"},
      {"first=\"country\" second=\"provider\"", 0, "country:2 country_name name name_local primary"}}},
    {"service-providers",
     "apns",
     sample::serviceProviders,
     sample::accessPoints,
     {{"", 0, "country provider apn label plan1 plan2 usage username password dns1 dns2 mmsc mmsproxy auth"},
      {"", retain, "country:3 provider apn label plan1 plan2 usage username password dns1 dns2 mmsc mmsproxy auth"},
      {"first=\"country\" second=\"provider\"", 0,
       "country:2 provider:1 apn label plan1 plan2 usage username password dns1 dns2 mmsc mmsproxy auth"}}},
    {"service-providers",
     "networks",
     sample::serviceProviders,
     sample::networks,
     {{"", 0, "provider mcc mnc"},
      {"", retain, "provider mcc mnc"},
      {"first=\"country\" second=\"provider\"", 0, "provider:1 mcc mnc"}}},
};

class XmlMapSample : public testing::TestWithParam<std::tuple<Sample, Processor>> {
 protected:
  const Sample& sample() const { return std::get<0>(GetParam()); }

  std::string queryOf(const Variant& variant) const {
    const std::string map = KVXDM_SOURCE_DIR "/tests/maps/" + std::string(sample().map) + ".xml";
    MapImport import;
    EXPECT_TRUE(import.runFile(map, sample().table, variant.groupBy, variant.flags)) << import.error();
    EXPECT_EQ(columnsOf(import.main()), variant.columns);
    KvbString error;
    return str(import.main()->genXQueryToColumns(true, false, true, false, &error));
  }

  /** The rows of `query`; a query that was run before is not run again. */
  const Rows& run(const std::string& query) {
    auto [place, isNew] = rowsByQuery_.try_emplace(query);
    if (isNew) {
      const ProcessResult result = runQueryOnFile(std::get<1>(GetParam()), query, sample().document);
      EXPECT_EQ(result.status, 0) << result.error;
      place->second = rowsOf(result.output);
    }
    return place->second;
  }

 private:
  std::map<std::string, Rows> rowsByQuery_;
};

TEST_P(XmlMapSample, GivesTheRowsOfTheDocument) {
  pugi::xml_document document;
  ASSERT_TRUE(document.load_file(sample().document, pugi::parse_default | pugi::parse_ws_pcdata))
      << sample().document << " comes from a Debian package";
  const Rows expected = sample().read(document.document_element());
  ASSERT_FALSE(expected.empty());
  for (const Variant& variant : sample().variants) {
    const Rows& rows = run(queryOf(variant));
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i], expected[i]) << "row " << i;
  }
}

std::string nameOfSample(const testing::TestParamInfo<XmlMapSample::ParamType>& info) {
  const auto& [sample, processor] = info.param;
  std::string name = std::string(sample.map) + "_" + sample.table + "_" + nameOf(processor);
  for (char& c : name) {
    if (c == '-') c = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Tables, XmlMapSample,
                         testing::Combine(testing::ValuesIn(samples), testing::ValuesIn(processors)), nameOfSample);

}  // namespace

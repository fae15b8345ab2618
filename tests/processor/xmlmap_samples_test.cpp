// Imports each table of the maps in tests/maps, runs its query over the real document in each processor, and compares
// the rows with those that a reader without maps and queries finds. The documents come from the Debian packages
// unicode-cldr-core, php-symfony-validator and mobile-broadband-provider-info.
#include <gtest/gtest.h>

#include <map>
#include <pugixml.hpp>

#include "xmlmap.h"
#include "xquery.h"

namespace {

constexpr unsigned retain = 0x80000000;
constexpr unsigned heading = 0x20000000;

constexpr const char* windowsZones = "/usr/share/unicode/cldr/common/supplemental/windowsZones.xml";
constexpr const char* validators =
    "/usr/share/php/Symfony/Component/Validator/Resources/translations/validators.ja.xlf";
constexpr const char* serviceProviders = "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

// The reader without maps and queries

std::string normalized(std::string_view text) {
  std::string words;
  bool pending = false;
  for (char c : text) {
    const bool isSpace = c == ' ' || c == '\t' || c == '\n' || c == '\r';
    if (!isSpace && pending && !words.empty()) words += ' ';
    if (!isSpace) words += c;
    pending = isSpace;
  }
  return words;
}

/** The element's own text, without that of its children, with white space normalised. */
std::string text(pugi::xml_node element) {
  std::string own;
  for (pugi::xml_node child : element.children()) own += child.type() == pugi::node_element ? "" : child.value();
  return normalized(own);
}

std::string attribute(pugi::xml_node element, const char* name) { return element.attribute(name).value(); }

/** The text of the child `name` that has, or has not, the attribute "xml:lang". */
std::string name(pugi::xml_node parent, bool hasLanguage) {
  for (pugi::xml_node child : parent.children("name")) {
    if (child.attribute("xml:lang").empty() != hasLanguage) return text(child);
  }
  return {};
}

pugi::xml_node child(pugi::xml_node parent, const char* name, int number) {
  for (pugi::xml_node each : parent.children(name)) {
    if (--number == 0) return each;
  }
  return {};
}

Rows zones(pugi::xml_node data) {
  Rows rows;
  pugi::xml_node zones = data.child("windowsZones").child("mapTimezones");
  for (pugi::xml_node zone : zones.children("mapZone")) {
    rows.push_back({{"type_version", attribute(zones, "typeVersion")},
                    {"cldr_revision", attribute(data.child("version"), "number")},
                    {"windows", attribute(zone, "other")},
                    {"territory", attribute(zone, "territory")},
                    {"tzid", attribute(zone, "type")}});
  }
  return rows;
}

Rows releases(pugi::xml_node data) {
  pugi::xml_node zones = data.child("windowsZones").child("mapTimezones");
  return {{{"other_version", attribute(zones, "otherVersion")}, {"type_version", attribute(zones, "typeVersion")}}};
}

Rows units(pugi::xml_node xliff) {
  Rows rows;
  pugi::xml_node file = xliff.child("file");
  for (pugi::xml_node unit : file.child("body").children("trans-unit")) {
    rows.push_back({{"source_lang", attribute(file, "source-language")},
                    {"target_lang", attribute(file, "target-language")},
                    {"original", attribute(file, "original")},
                    {"id", attribute(unit, "id")},
                    {"resname", attribute(unit, "resname")},
                    {"source", text(unit.child("source"))},
                    {"target", text(unit.child("target"))},
                    {"state", attribute(unit.child("target"), "state")}});
  }
  return rows;
}

Rows countries(pugi::xml_node providers) {
  Rows rows;
  for (pugi::xml_node country : providers.children("country")) {
    rows.push_back({{"code", attribute(country, "code")}, {"name", text(country.child("name"))}});
  }
  return rows;
}

template <class Visit>
void forEachProvider(pugi::xml_node providers, Visit visit) {
  for (pugi::xml_node country : providers.children("country")) {
    for (pugi::xml_node provider : country.children("provider")) visit(country, provider);
  }
}

Rows providers(pugi::xml_node root) {
  Rows rows;
  forEachProvider(root, [&](pugi::xml_node country, pugi::xml_node provider) {
    rows.push_back({{"country", attribute(country, "code")},
                    {"country_name", text(country.child("name"))},
                    {"name", name(provider, false)},
                    {"name_local", name(provider, true)},
                    {"primary", attribute(provider, "primary")}});
  });
  return rows;
}

Row accessPoint(pugi::xml_node country, pugi::xml_node provider, pugi::xml_node apn) {
  return {{"country", attribute(country, "code")},
          {"provider", name(provider, false)},
          {"apn", attribute(apn, "value")},
          {"label", name(apn, false)},
          {"plan1", attribute(child(apn, "plan", 1), "type")},
          {"plan2", attribute(child(apn, "plan", 2), "type")},
          {"usage", attribute(apn.child("usage"), "type")},
          {"username", text(apn.child("username"))},
          {"password", text(apn.child("password"))},
          {"dns1", text(child(apn, "dns", 1))},
          {"dns2", text(child(apn, "dns", 2))},
          {"mmsc", text(apn.child("mmsc"))},
          {"mmsproxy", text(apn.child("mmsproxy"))},
          {"auth", attribute(apn.child("authentication"), "method")}};
}

Rows accessPoints(pugi::xml_node root) {
  Rows rows;
  forEachProvider(root, [&](pugi::xml_node country, pugi::xml_node provider) {
    for (pugi::xml_node gsm : provider.children("gsm")) {
      for (pugi::xml_node apn : gsm.children("apn")) rows.push_back(accessPoint(country, provider, apn));
    }
  });
  return rows;
}

Rows networks(pugi::xml_node root) {
  Rows rows;
  forEachProvider(root, [&](pugi::xml_node, pugi::xml_node provider) {
    for (pugi::xml_node gsm : provider.children("gsm")) {
      for (pugi::xml_node id : gsm.children("network-id")) {
        rows.push_back(
            {{"provider", name(provider, false)}, {"mcc", attribute(id, "mcc")}, {"mnc", attribute(id, "mnc")}});
      }
    }
  });
  return rows;
}

// The tables

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
     windowsZones,
     zones,
     {{"", 0, "type_version cldr_revision windows territory tzid"},
      {"", retain, "type_version:1 cldr_revision windows territory tzid"},
      {"a=type_version b=windows", retain, "type_version:2 cldr_revision windows:1 territory tzid"}}},
    {"windows-zones",
     "releases",
     windowsZones,
     releases,
     {{"", 0, "other_version type_version"}, {"", retain, "other_version type_version"}}},
    {"validators-19",
     "units",
     validators,
     units,
     {{"", 0, "source_lang target_lang original id resname source target state"},
      {"", retain | heading, "source_lang:2 target_lang:2 original id resname source target state"},
      {"a=original", 0, "source_lang target_lang original:1 id resname source target state"}}},
    {"validators-21",
     "units",
     validators,
     units,
     {{"", 0, "source_lang target_lang original id resname source target state"},
      {"", retain, "source_lang:2 target_lang:2 original id resname source target state"},
      {"a=original", 0, "source_lang target_lang original:1 id resname source target state"}}},
    {"service-providers",
     "countries",
     serviceProviders,
     countries,
     {{"", 0, "code name"}, {"", retain, "code name"}, {"first=code", 0, "code:1 name"}}},
    {"service-providers",
     "providers",
     serviceProviders,
     providers,
     {{"", 0, "country country_name name name_local primary"},
      {"", retain, "country:1 country_name name name_local primary"},
      {"first=\"country\" second=\"provider\"", 0, "country:2 country_name name name_local primary"}}},
    {"service-providers",
     "apns",
     serviceProviders,
     accessPoints,
     {{"", 0, "country provider apn label plan1 plan2 usage username password dns1 dns2 mmsc mmsproxy auth"},
      {"", retain, "country:3 provider apn label plan1 plan2 usage username password dns1 dns2 mmsc mmsproxy auth"},
      {"first=\"country\" second=\"provider\"", 0,
       "country:2 provider:1 apn label plan1 plan2 usage username password dns1 dns2 mmsc mmsproxy auth"}}},
    {"service-providers",
     "networks",
     serviceProviders,
     networks,
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

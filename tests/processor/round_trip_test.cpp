// Takes rows from real documents and makes documents of them again, in each processor. The documents come from the
// Debian packages unicode-cldr-core, php-symfony-validator and mobile-broadband-provider-info.
#include <gtest/gtest.h>

#include "documents.h"
#include "from_rows_model.h"
#include "xmlmap.h"
#include "xquery.h"

namespace {

constexpr const char* windowsZones = "/usr/share/unicode/cldr/common/supplemental/windowsZones.xml";
constexpr const char* validators =
    "/usr/share/php/Symfony/Component/Validator/Resources/translations/validators.ja.xlf";
constexpr const char* serviceProviders = "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

std::string run(Processor processor, const std::string& query, const std::string& file) {
  const ProcessResult result = runQueryOnFile(processor, query, file);
  if (result.status != 0) throw std::runtime_error(std::string(nameOf(processor)) + ": " + result.error);
  return result.output;
}

/** Both queries of a model. */
class Queries {
 public:
  Queries(XDMMain* main, bool groupRows) {
    KvbString error;
    toRows_ = str(main->genXQueryToColumns(true, true, true, true, &error));
    fromRows_ = str(main->genXQueryFromColumns(true, groupRows, &error));
    if (error.length() > 0) throw std::runtime_error(str(error));
  }

  std::string rowsOf(Processor processor, const std::string& document) const {
    return run(processor, toRows_, folder_.write("document.xml", document));
  }
  std::string documentOf(Processor processor, const std::string& rows) const {
    return run(processor, fromRows_, folder_.write("rows.xml", rows));
  }

 private:
  TemporaryFolder folder_;
  std::string toRows_, fromRows_;
};

/** A document and a choice of nodes of its vocabulary. */
struct Sample {
  const char* name;
  const char* document;
  const char* model;
  std::vector<SelectedNode> columns;

  XDMMainPtr main() const {
    XDMMainPtr main = loadModel(model);
    for (const SelectedNode& selected : columns) selectNode(main.get(), selected);
    return main;
  }
};

std::ostream& operator<<(std::ostream& stream, const Sample& sample) { return stream << sample.name; }

constexpr auto nameOfCase = [](const auto& info) {
  return std::string(std::get<0>(info.param).name) + nameOf(std::get<1>(info.param));
};

// Every node of the document is in the model, and selected if it holds a value. Each row has all of its attributes; one
// that is absent would come back empty.
const Sample wholeDocument = {"WindowsZones",
                              windowsZones,
                              R"(<xdm version="1.0"><element name="supplementalData">
          <element name="version"><attribute name="number"/></element>
          <element name="windowsZones">
            <element name="mapTimezones"><attribute name="otherVersion"/><attribute name="typeVersion"/>
              <element name="mapZone" decides="true">
                <attribute name="other"/><attribute name="territory"/><attribute name="type"/>
              </element></element></element></element></xdm>)",
                              {{"/supplementalData/version/@number", "number"},
                               {"/supplementalData/windowsZones/mapTimezones/@otherVersion", "otherVersion"},
                               {"/supplementalData/windowsZones/mapTimezones/@typeVersion", "typeVersion", 1},
                               {"/supplementalData/windowsZones/mapTimezones/mapZone/@other", "other"},
                               {"/supplementalData/windowsZones/mapTimezones/mapZone/@territory", "territory"},
                               {"/supplementalData/windowsZones/mapTimezones/mapZone/@type", "type"}}};

class WholeDocument : public testing::TestWithParam<Processor> {};

TEST_P(WholeDocument, ComesBackFromItsRows) {
  const XDMMainPtr main = wholeDocument.main();
  const std::string document = readFile(wholeDocument.document);
  for (bool groupRows : {false, true}) {
    const Queries queries(main.get(), groupRows);
    const std::string again = queries.documentOf(GetParam(), queries.rowsOf(GetParam(), document));
    EXPECT_EQ(treeOf(again, Blanks::ignore), treeOf(document, Blanks::ignore));
  }
}

INSTANTIATE_TEST_SUITE_P(Processors, WholeDocument, testing::ValuesIn(processors),
                         [](const auto& info) { return nameOf(info.param); });

/** The rows of the document, those of the document made of them, and that both are the same. */
void expectSameRows(const Queries& queries, Processor processor, const std::string& document) {
  const std::string rows = queries.rowsOf(processor, readFile(document));
  const std::string again = queries.rowsOf(processor, queries.documentOf(processor, rows));
  EXPECT_FALSE(rowsOf(rows).empty());
  EXPECT_EQ(rowsOf(again), rowsOf(rows));
}

constexpr char providers[] = R"(<xdm version="1.0"><element name="serviceproviders"><element name="country">
  <attribute name="code"/><element name="name"/>
  <element name="provider" decides="true"><attribute name="primary"/><element name="name"/></element>
</element></element></xdm>)";

constexpr char networks[] = R"(<xdm version="1.0"><element name="serviceproviders"><element name="country">
  <attribute name="code"/><element name="provider"><element name="gsm">
    <element name="network-id" decides="true"><attribute name="mcc"/><attribute name="mnc"/></element>
  </element></element></element></element></xdm>)";

// Rows of several countries: the group column brings each back to its own.
const Sample groupedRows[] = {
    {"Providers",
     serviceProviders,
     providers,
     {{"/serviceproviders/country/@code", "country", 1},
      {"/serviceproviders/country/name", "country_name"},
      {"/serviceproviders/country/provider/@primary", "primary"},
      {"/serviceproviders/country/provider/name", "name"}}},
    {"Networks",
     serviceProviders,
     networks,
     {{"/serviceproviders/country/@code", "country", 1},
      {"/serviceproviders/country/provider/gsm/network-id/@mcc", "mcc"},
      {"/serviceproviders/country/provider/gsm/network-id/@mnc", "mnc"}}},
};

class GroupedRows : public testing::TestWithParam<std::tuple<Sample, Processor>> {};

TEST_P(GroupedRows, ComeBackFromTheirDocument) {
  const auto& [sample, processor] = GetParam();
  const XDMMainPtr main = sample.main();
  expectSameRows(Queries(main.get(), true), processor, sample.document);
}

INSTANTIATE_TEST_SUITE_P(Samples, GroupedRows,
                         testing::Combine(testing::ValuesIn(groupedRows), testing::ValuesIn(processors)), nameOfCase);

/** A table of a map in tests/maps. */
struct MapTable {
  const char* name;
  const char* document;
  const char* map;
  const char* table;
  const char* groupBy;
  unsigned flags;
};

constexpr unsigned retain = 0x80000000;
constexpr unsigned heading = 0x20000000;

constexpr MapTable mapTables[] = {
    {"Zones", windowsZones, "windows-zones", "zones", "", retain},
    {"ZonesGroupedByVersionAndName", windowsZones, "windows-zones", "zones", "a=type_version b=windows", 0},
    {"Releases", windowsZones, "windows-zones", "releases", "", 0},
    {"UnitsOfADefaultNamespace", validators, "validators-19", "units", "", retain | heading},
    {"UnitsGroupedByFile", validators, "validators-19", "units", "a=original", 0},
    {"UnitsOfANumberedNamespace", validators, "validators-21", "units", "", 0},
    {"Countries", serviceProviders, "service-providers", "countries", "", 0},
};

std::ostream& operator<<(std::ostream& stream, const MapTable& table) { return stream << table.name; }

class MappedRows : public testing::TestWithParam<std::tuple<MapTable, Processor>> {};

TEST_P(MappedRows, ComeBackFromTheirDocument) {
  const auto& [table, processor] = GetParam();
  MapImport import;
  const std::string map = KVXDM_SOURCE_DIR "/tests/maps/" + std::string(table.map) + ".xml";
  ASSERT_TRUE(import.runFile(map, table.table, table.groupBy, table.flags)) << import.error();
  for (bool groupRows : {false, true}) {
    expectSameRows(Queries(import.main(), groupRows), processor, table.document);
  }
}

INSTANTIATE_TEST_SUITE_P(Tables, MappedRows,
                         testing::Combine(testing::ValuesIn(mapTables), testing::ValuesIn(processors)), nameOfCase);

}  // namespace

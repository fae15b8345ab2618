// Runs the recipes of docs/xmlmap.md, and the mistakes that they are for, in each processor.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "xmlmap.h"
#include "xquery.h"

namespace {

using testing::HasSubstr;

constexpr std::string_view text = "<DATATYPE>string</DATATYPE><LENGTH>2</LENGTH>";

constexpr const char* items =
    "<doc xml:lang='en'>"
    "<item id='007' kind='a&amp;b' href='x/y'><name xml:lang='de'>eins</name><name>one</name><tag k='x'/><tag k='y'/>"
    "<note>see <b>this</b>  first</note><urgent/></item>"
    "<item id='008'><name>two</name><note/></item></doc>";

constexpr const char* feed = "<feed xmlns='urn:feed'><entry id='1'><title>A</title></entry></feed>";
constexpr const char* ampersandFeed = "<feed xmlns='urn:a&amp;b'><entry id='1'><title>A</title></entry></feed>";
constexpr const char* sections = "<s n='1'><s n='1.1'><s n='1.1.1'/></s><s n='1.2'/></s>";

/** A map and a document, and the rows, by values, that come of them; or what the processor says instead. */
struct Recipe {
  const char* name;
  std::string map;
  const char* document;
  std::vector<std::vector<std::string>> rows;
  const char* processorError = nullptr;
};

std::string itemMap(std::string_view rowPath, std::string_view columns) {
  return rowmaps(table("t", rowPath, columns));
}

std::string feedMap(std::string_view before) {
  return rowmaps(std::string(before) + table("t", "/feed/entry", column("title", "/feed/entry/title", text)));
}

std::string numberedFeedMap(std::string_view ns) {
  return rowmaps("2.1", table("t", "/{1}feed/{1}entry", column("title", "/{1}feed/{1}entry/{1}title", text)) +
                            "<NAMESPACES>" + std::string(ns) + "</NAMESPACES>");
}

std::string heading(std::string_view table) {
  return "<OUTPUT><TABLEREF name='" + std::string(table) +
         "'/><HEADING><ATTRIBUTE name='xmlns' value='urn:feed'/></HEADING></OUTPUT>";
}

std::vector<Recipe> namespaceRecipes() {
  return {
      {"DefaultNamespaceOverlooked", feedMap(""), feed, {}},
      {"DefaultNamespaceByHeading", feedMap(heading("t")), feed, {{"A"}}},
      {"DefaultNamespaceByHeadingOfAnotherTable", feedMap(heading("u")), feed, {}},
      {"DefaultNamespaceByNumber", numberedFeedMap("<NS id='1' prefix='f'>urn:feed</NS>"), feed, {{"A"}}},
      {"DefaultNamespaceByNumberWithoutPrefix", numberedFeedMap("<NS id='1'>urn:feed</NS>"), feed, {{"A"}}},
      {"AmpersandInAUri", numberedFeedMap("<NS id='1' prefix='f'>urn:a&amp;amp;b</NS>"), ampersandFeed, {{"A"}}},
      {"AmpersandInAUriOverlooked",
       numberedFeedMap("<NS id='1' prefix='f'>urn:a&amp;b</NS>"),
       ampersandFeed,
       {},
       "XPST0003"},
  };
}

std::vector<Recipe> predicateRecipes() {
  const std::string id = column("id", "/doc/item[urgent]/@id", text);
  return {
      {"RowPathWithAPredicate", itemMap("/doc/item[urgent]", id), items, {{"007"}}},
      {"RowPathWithAPredicateSpelledOtherwise", itemMap("/doc/item[ urgent ]", id), items, {}, "XP"},
      {"ColumnAboveARowPathWithAPredicate",
       itemMap("/doc/item[2]/name", column("id", "/doc/item[2]/@id", text) + column("n", "/doc/item[2]/name", text)),
       items,
       {{"008", "two"}}},
      {"EmptyElementAsAFlag",
       itemMap("/doc/item", column("flag", "/doc/item/urgent", text) + id),
       items,
       {{"", "007"}, {"", ""}}},
      {"AmpersandInAPredicate",
       itemMap("/doc/item", column("id", "/doc/item[@kind='a&amp;amp;b']/@id", text)),
       items,
       {{"007"}, {""}}},
      {"SlashInAPredicate",
       itemMap("/doc/item", column("id", "/doc/item[@href='x&amp;#47;y']/@id", text)),
       items,
       {{"007"}, {""}}},
      {"SlashAtTheEnd", itemMap("/doc/item/", column("id", "/doc/item/@id", text)), items, {}, "XPST0003"},
  };
}

std::vector<Recipe> valueRecipes() {
  const std::string typed =
      "<DATATYPE>integer</DATATYPE><LENGTH>1</LENGTH><DEFAULT>9</DEFAULT>"
      "<ENUM><VALUE>9</VALUE></ENUM><FORMAT>{0}</FORMAT>";
  return {
      {"RepeatedElements", itemMap("/doc/item", column("name", "/doc/item/name", text)), items, {}, "XPTY0004"},
      {"RepeatedAttributes", itemMap("/doc/item", column("k", "/doc/item/tag/@k", text)), items, {}, "XPTY0004"},
      {"RepeatedElementsByPredicate",
       itemMap("/doc/item", column("k1", "/doc/item/tag[1]/@k", text) + column("k2", "/doc/item/tag[2]/@k", text)),
       items,
       {{"x", "y"}, {"", ""}}},
      {"RepeatedElementsInATableOfTheirOwn",
       itemMap("/doc/item/tag", column("id", "/doc/item/@id", text) + column("k", "/doc/item/tag/@k", text)),
       items,
       {{"007", "x"}, {"007", "y"}}},
      {"LanguageInAPredicate",
       itemMap("/doc/item", column("n", "/doc/item/name[not(@xml:lang)]", text)),
       items,
       {{"one"}, {"two"}}},
      {"LanguageAsAColumn",
       rowmaps("<NAMESPACES/>" +
               table("t", "/doc/item/name",
                     column("own", "/doc/item/name/@xml:lang", text) + column("all", "/doc/@xml:lang", text))),
       items,
       {{"de", "en"}, {"", "en"}, {"", "en"}}},
      {"RecursionAtOneDepth",
       itemMap("/s/s", column("n", "/s/s/@n", text) + column("up", "/s/@n", text)),
       sections,
       {{"1.1", "1"}, {"1.2", "1"}}},
      {"RecursionAtTheNextDepth",
       itemMap("/s/s/s", column("n", "/s/s/s/@n", text) + column("up", "/s/s/@n", text)),
       sections,
       {{"1.1.1", "1.1"}}},
      {"MixedContent", itemMap("/doc/item", column("note", "/doc/item/note", text)), items, {{"see first"}, {""}}},
      {"TypesThatDoNotTouchTheRows",
       itemMap("/doc/item", column("id", "/doc/item/@id", typed) + column("k", "/doc/item/@kind", typed)),
       items,
       {{"007", "a&b"}, {"008", ""}}},
  };
}

class XmlMapRecipe : public testing::TestWithParam<Recipe> {};

TEST_P(XmlMapRecipe, GivesWhatThePageSays) {
  MapImport import;
  ASSERT_TRUE(import.run(GetParam().map)) << import.error();
  KvbString error;
  const std::string query = str(import.main()->genXQueryToColumns(true, false, true, false, &error));
  for (Processor processor : processors) {
    const ProcessResult result = runQuery(processor, query, GetParam().document);
    if (GetParam().processorError) {
      EXPECT_NE(result.status, 0) << result.output;
      EXPECT_THAT(result.error, HasSubstr(GetParam().processorError));
      continue;
    }
    ASSERT_EQ(result.status, 0) << result.error;
    std::vector<std::vector<std::string>> values;
    for (const Row& row : rowsOf(result.output)) {
      auto& cells = values.emplace_back();
      for (const auto& [name, value] : row) cells.push_back(value);
    }
    EXPECT_EQ(values, GetParam().rows) << nameOf(processor);
  }
}

std::string nameOfRecipe(const testing::TestParamInfo<Recipe>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Namespaces, XmlMapRecipe, testing::ValuesIn(namespaceRecipes()), nameOfRecipe);
INSTANTIATE_TEST_SUITE_P(Predicates, XmlMapRecipe, testing::ValuesIn(predicateRecipes()), nameOfRecipe);
INSTANTIATE_TEST_SUITE_P(Values, XmlMapRecipe, testing::ValuesIn(valueRecipes()), nameOfRecipe);

TEST(XmlMapRecipes, GiveResultsPlainNamesOnlyByNumber) {
  KvbString error;
  MapImport byHeading;
  ASSERT_TRUE(byHeading.run(feedMap(heading("t"))));
  const std::string one = str(byHeading.main()->genXQueryToColumns(true, false, true, false, &error));
  EXPECT_THAT(runQuery(Processor::saxon, one, feed).output, HasSubstr("<table xmlns=\"urn:feed\">"));
  MapImport byNumber;
  ASSERT_TRUE(byNumber.run(numberedFeedMap("<NS id='1' prefix='f'>urn:feed</NS>")));
  const std::string other = str(byNumber.main()->genXQueryToColumns(true, false, true, false, &error));
  EXPECT_THAT(runQuery(Processor::saxon, other, feed).output, HasSubstr("<table>"));
}

TEST(XmlMapRecipes, NeedARootWithoutPredicate) {
  MapImport import;
  EXPECT_FALSE(import.run(itemMap("/doc[1]/item", column("id", "/doc[1]/item/@id", text))));
  EXPECT_EQ(import.error(), catalogue(1443, "/doc", "doc[1]"));
}

TEST(XmlMapRecipes, NeedNamespacesForALanguageAsAColumn) {
  MapImport import;
  EXPECT_FALSE(import.run(itemMap("/doc/item", column("lang", "/doc/item/@xml:lang", text))));
  EXPECT_EQ(import.error(), catalogue(1444, "@xml:lang"));
}

}  // namespace

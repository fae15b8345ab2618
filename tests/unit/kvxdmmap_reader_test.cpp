// Tests kvxdmmap.cpp: which table, OUTPUT and NAMESPACES of a map count, the row, the heading, grouping, and where the
// text of each failure goes.
#include <gtest/gtest.h>
#include <kvxbase/kvbparse.h>
#include <kvxlog/kvlogger.h>

#include <chrono>
#include <vector>

#include "xmlmap.h"

namespace {

constexpr unsigned retain = 0x80000000;
constexpr unsigned acceptOutput = 0x40000000;
constexpr unsigned heading = 0x20000000;

std::string simpleTable(std::string_view name) { return table(name, "/doc/item", column("id", "/doc/item/@id")); }

/** The failure was told to the caller only. */
void expectCallerTold(const MapImport& import, const std::string& text) {
  EXPECT_EQ(import.error(), text);
  EXPECT_EQ(import.mainError(), "before");
}

/** The failure was told to the main object, and its text copied to the caller. */
void expectBothTold(const MapImport& import, const std::string& text) {
  EXPECT_EQ(import.error(), text);
  EXPECT_EQ(import.mainError(), text);
}

// Model, file, root and version

TEST(MapReader, BuildsTreeRowAndColumnsOfTheTable) {
  MapImport import;
  const std::string columns = column("id", "/doc/item/@id") + column("name", "/doc/item/name");
  ASSERT_TRUE(import.run(rowmaps(table("t", "/doc/item", columns)), "t")) << import.error();
  EXPECT_EQ(outline(import.root()), "doc(item*(@id name))");
  EXPECT_EQ(columnsOf(import.main()), "id name");
  EXPECT_EQ(import.error(), "");
  EXPECT_EQ(import.mainError(), "before");
  EXPECT_FALSE(import.main()->getGroupExplicit());
}

TEST(MapReader, RefusesAModelThatHasARoot) {
  MapImport import;
  import.main()->createRoot(KvbString(), kv("old"));
  EXPECT_FALSE(import.run(rowmaps(simpleTable("t")), {}, "x=y"));
  expectCallerTold(import, catalogue(1422));
  EXPECT_EQ(outline(import.root()), "old");
  EXPECT_FALSE(import.main()->getGroupExplicit());
}

TEST(MapReader, TellsWhyAMapCannotBeLoaded) {
  MapImport import;
  const std::string missing = import.file() + ".none";
  KvDom dom;
  ASSERT_FALSE(dom.loadFile(kv(missing)));
  EXPECT_FALSE(import.runFile(missing));
  expectCallerTold(import, catalogue(472, missing.c_str(), dom.getErrorMessage().asCstr()));
}

struct LogRecord {
  std::vector<std::string> lines;
  static void keep(const KvLogEvent& event, void* context) {
    static_cast<LogRecord*>(context)->lines.push_back(std::string(event.category) + " " + std::to_string(event.level) +
                                                      " " + event.sourceUnit + " " + event.text);
  }
};

TEST(MapReader, LogsTheLoadedMap) {
  LogRecord record;
  kvlogSetSink(LogRecord::keep, &record, 0);
  MapImport import;
  import.run("<OTHER/>");
  kvlogSetSink(nullptr, nullptr, 0);
  EXPECT_EQ(record.lines,
            std::vector<std::string>{"KV.XDM 2 kvxdmmap Loaded XMLMap '" + import.file() + "' into DOM."});
}

TEST(MapReader, RefusesAnotherRootElement) {
  for (const char* map :
       {"<rowmaps version='1.9'/>", "<x:ROWMAPS version='1.9' xmlns:x='u'/>", "<xdm version='1.0'/>"}) {
    MapImport import;
    EXPECT_FALSE(import.run(map, {}, "x=y"));
    expectCallerTold(import, catalogue(1448, import.file().c_str()));
    EXPECT_FALSE(import.main()->getGroupExplicit());
  }
}

TEST(MapReader, AcceptsTwoVersions) {
  for (const char* version : {"1.9", "2.1"}) {
    MapImport import;
    EXPECT_TRUE(import.run(rowmaps(version, simpleTable("t")))) << version;
  }
}

TEST(MapReader, RefusesEveryOtherVersion) {
  for (const char* version : {"", "1", "1.90", "2.0", "2.10", " 1.9", "1.9 "}) {
    MapImport import;
    EXPECT_FALSE(import.run(rowmaps(version, simpleTable("t")), {}, "x=y"));
    expectCallerTold(import, catalogue(1449, import.file().c_str(), version));
    EXPECT_FALSE(import.main()->getGroupExplicit());
  }
}

TEST(MapReader, RefusesAMissingVersion) {
  MapImport import;
  EXPECT_FALSE(import.run("<ROWMAPS>" + simpleTable("t") + "</ROWMAPS>"));
  expectCallerTold(import, catalogue(1449, import.file().c_str(), ""));
}

// Grouping

std::string threeColumns() {
  return rowmaps(table("t", "/d/r", column("x", "/d/r/x") + column("y", "/d/r/y") + column("z", "/d/r/z")));
}

TEST(MapReader, GivesTheFirstGroupAttributeTheHighestLevel) {
  MapImport import;
  ASSERT_TRUE(import.run(threeColumns(), {}, "first=x second=y"));
  EXPECT_EQ(columnsOf(import.main()), "x:2 y:1 z");
  EXPECT_TRUE(import.main()->getGroupExplicit());
}

TEST(MapReader, CountsGroupAttributesThatNameNoColumnAndTheFirstOfSeveral) {
  const struct {
    const char* groupBy;
    const char* columns;
  } cases[] = {
      {"a=z b=none c=x", "x:1 y z:3"},
      {"a=y b=y c=x", "x:1 y:3 z"},
      {"a=X", "x y z"},
      {"x=z", "x y z:1"},
      {"a='x' b=\"y\"", "x:2 y:1 z"},
      {"   ", "x y z"},
  };
  for (const auto& each : cases) {
    MapImport import;
    ASSERT_TRUE(import.run(threeColumns(), {}, each.groupBy)) << each.groupBy;
    EXPECT_EQ(columnsOf(import.main()), each.columns) << each.groupBy;
    EXPECT_TRUE(import.main()->getGroupExplicit());
  }
}

TEST(MapReader, GivesAnUnnamedColumnTheLevelOfAnEmptyGroupValue) {
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(table("t", "/d/r", column("", "/d/r/x"))), {}, "a='' b=x"));
  EXPECT_EQ(columnsOf(import.main()), "x:2");
}

TEST(MapReader, TellsWhyAGroupByStringDoesNotParse) {
  KvbParse parser;
  ASSERT_FALSE(parser.parse(kv("a=x b"), 0));
  MapImport import;
  EXPECT_FALSE(import.run(threeColumns(), "none", "a=x b"));
  expectCallerTold(import, "Failed to parse groupBy string 'a=x b' (" + str(parser.getErrorMessage()) + ")");
  EXPECT_TRUE(import.main()->getGroupExplicit());
  EXPECT_EQ(import.root(), nullptr);
}

TEST(MapReader, KeepsTheGroupExplicitFlagAfterALaterFailure) {
  MapImport import;
  EXPECT_FALSE(import.run(threeColumns(), "none", "a=x"));
  expectCallerTold(import, catalogue(1450, import.file().c_str(), "none"));
  EXPECT_TRUE(import.main()->getGroupExplicit());
}

// Choice of the table

TEST(MapReader, TakesTheFirstTableForAnEmptyName) {
  for (const char* first : {"", "one"}) {
    MapImport import;
    ASSERT_TRUE(import.run(rowmaps("<REMARK/>" + table(first, "/a/b", column("x", "/a/b/x")) + simpleTable("two"))));
    EXPECT_EQ(outline(import.root()), "a(b*(x))");
  }
}

TEST(MapReader, ChoosesATableByItsExactName) {
  MapImport import;
  const std::string others = table("", "/a", column("x", "/a/x")) + table("T", "/b", column("x", "/b/x"));
  ASSERT_TRUE(import.run(rowmaps(others + simpleTable("t") + table("t", "/c", column("x", "/c/x"))), "t"));
  EXPECT_EQ(outline(import.root()), "doc(item*(@id))");
}

TEST(MapReader, NamesTheTableThatIsMissing) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(table("", "/a", column("x", "/a/x")) + simpleTable("T")), "t"));
  expectCallerTold(import, catalogue(1450, import.file().c_str(), "t"));
  EXPECT_EQ(import.root(), nullptr);
}

TEST(MapReader, NamesNoTableWhenNoneWasAskedFor) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps("<OUTPUT/><table name='t'/>")));
  expectCallerTold(import, catalogue(1450, import.file().c_str()));
}

TEST(MapReader, FailsWithoutColumnsAndNamesTheTableInUse) {
  for (const char* asked : {"", "first"}) {
    MapImport import;
    EXPECT_FALSE(import.run(rowmaps(table("first", "/a/b", "<column/>") + simpleTable("t")), asked));
    expectCallerTold(import, catalogue(1452, import.file().c_str(), "first"));
    EXPECT_EQ(outline(import.root()), "a(b*)");
  }
}

// OUTPUT

std::string output(std::string_view references, std::string_view attributes) {
  return "<OUTPUT>" + std::string(references) + "<HEADING>" + std::string(attributes) + "</HEADING></OUTPUT>";
}

constexpr std::string_view declaresP = "<ATTRIBUTE name='xmlns:p' value='urn:p'/>";

TEST(MapReader, AcceptsAnOutputByItsFirstTableref) {
  const struct {
    const char* references;
    const char* tableName;
    bool accepted;
  } cases[] = {
      {"<TABLEREF name='t'/>", "t", true},
      {"<TABLEREF name='t'/><TABLEREF name='u'/>", "t", true},
      {"<TABLEREF name='u'/><TABLEREF name='t'/>", "t", false},
      {"<TABLEREF name='T'/>", "t", false},
      {"<TABLEREF/>", "t", false},
      {"<TABLEREF name=''/>", "", false},
      {"", "t", false},
      {"<tableref name='t'/><TABLEREF name='t'/>", "t", true},
  };
  for (const auto& each : cases) {
    for (unsigned flags : {0U, acceptOutput}) {
      MapImport import;
      ASSERT_TRUE(import.run(rowmaps(output(each.references, declaresP) + simpleTable(each.tableName)), {}, {}, flags));
      EXPECT_EQ(declarations(import.root()), each.accepted || flags ? "p=urn:p" : "") << each.references;
    }
  }
}

TEST(MapReader, UsesTheFirstOutputOnly) {
  MapImport import;
  const std::string second = output("<TABLEREF name='t'/>", declaresP);
  ASSERT_TRUE(import.run(rowmaps("<OUTPUT/>" + second + simpleTable("t"))));
  EXPECT_EQ(declarations(import.root()), "");
}

TEST(MapReader, AcceptsTheOutputForATableWithoutNameOnlyByFlag) {
  const std::string map = rowmaps(output("<TABLEREF name='t'/>", declaresP) + "<TABLE><TABLE-PATH>/d/r</TABLE-PATH>" +
                                  column("x", "/d/r/x") + "</TABLE>");
  for (unsigned flags : {0U, acceptOutput}) {
    MapImport import;
    ASSERT_TRUE(import.run(map, {}, {}, flags));
    EXPECT_EQ(declarations(import.root()), flags ? "p=urn:p" : "");
  }
}

// Row path

std::string tableWithRowPath(std::string_view rowPath) {
  return "<TABLE name='t'>" + std::string(rowPath) + column("id", "/doc/item/@id") + "</TABLE>";
}

TEST(MapReader, TakesBothSyntaxesOfTheRowPathInAnyCase) {
  for (const char* syntax : {"XPath", "xpath", "XPathENR", "XPATHENR", ""}) {
    MapImport import;
    const std::string path = "<TABLE-PATH syntax='" + std::string(syntax) + "'> \n/doc/item\t</TABLE-PATH>";
    ASSERT_TRUE(import.run(rowmaps(tableWithRowPath(path)))) << syntax;
    EXPECT_EQ(outline(import.root()), "doc(item*(@id))");
  }
}

TEST(MapReader, RefusesAnotherSyntaxOfTheRowPath) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH syntax='XPath2'></TABLE-PATH>"))));
  expectBothTold(import, catalogue(1414, "TABLE-PATH", "XPath2"));
  EXPECT_EQ(import.root(), nullptr);
}

TEST(MapReader, RefusesAnEmptyRowPath) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH> \n </TABLE-PATH><TABLE-PATH>/doc</TABLE-PATH>"))));
  expectBothTold(import, catalogue(1415, "TABLE-PATH"));
}

TEST(MapReader, RefusesARowPathThatEndsInAnAttribute) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH>/doc/@item</TABLE-PATH>"))));
  expectBothTold(import, catalogue(1414, "TABLE-PATH", "/doc/@item"));
  EXPECT_EQ(outline(import.root()), "doc(@item)");
}

TEST(MapReader, RefusesARowPathThatCannotBeBuilt) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH>doc</TABLE-PATH>"))));
  expectBothTold(import, catalogue(1443, "/", "d"));
}

TEST(MapReader, UsesTheFirstRowPathOnly) {
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH>/doc</TABLE-PATH><TABLE-PATH>/x</TABLE-PATH>"))));
  EXPECT_EQ(outline(import.root()), "doc*(item(@id))");
}

TEST(MapReader, ImportsColumnsWithoutARowPath) {
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(tableWithRowPath(""))));
  EXPECT_EQ(outline(import.root()), "doc(item(@id))");
  EXPECT_EQ(import.main()->decidingElement(), nullptr);
}

TEST(MapReader, GivesTheRowElementItsPathAsWritten) {
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH>/doc/item[@id]</TABLE-PATH>"))));
  EXPECT_EQ(str(import.main()->decidingElement()->getXPath()), "/doc/item[@id]");
}

// A row path that ends in "/" makes the root's XPath end so too, and no column can spell that.
TEST(MapReader, LetsNoColumnUnderARootWithATrailingSlash) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH>/doc/</TABLE-PATH>"))));
  expectBothTold(import, catalogue(1443, "/doc/", "doc"));
}

// Heading attributes

std::string mapWithHeading(std::string_view attributes) {
  return rowmaps(output("<TABLEREF name='t'/>", attributes) + simpleTable("t"));
}

TEST(MapReader, MakesHeadingAttributesOnlyWithTheirFlag) {
  const std::string map = mapWithHeading("<ATTRIBUTE name='version' value='1.2'/><OTHER name='no' value='x'/>");
  for (unsigned flags : {0U, heading}) {
    MapImport import;
    ASSERT_TRUE(import.run(map, {}, {}, flags)) << import.error();
    EXPECT_EQ(outline(import.root()), flags ? "doc(@version item*(@id))" : "doc(item*(@id))");
  }
}

TEST(MapReader, MakesTheValueOfAHeadingAttributeItsDefault) {
  MapImport import;
  ASSERT_TRUE(import.run(mapWithHeading("<ATTRIBUTE name='a' value=' v '/><ATTRIBUTE name='b'/>"), {}, {}, heading));
  XDMAttrImpl* attribute = import.root()->firstAttribute();
  EXPECT_EQ(str(attribute->getDefault()), " v ");
  EXPECT_EQ(str(static_cast<XDMAttribute*>(attribute->getNextSibling())->getDefault()), "");
}

TEST(MapReader, GivesTheLastOfEqualHeadingAttributesTheSay) {
  MapImport import;
  ASSERT_TRUE(
      import.run(mapWithHeading("<ATTRIBUTE name='a' value='1'/><ATTRIBUTE name='a' value='2'/>"), {}, {}, heading));
  EXPECT_EQ(outline(import.root()), "doc(@a item*(@id))");
  EXPECT_EQ(str(import.root()->firstAttribute()->getDefault()), "2");
}

TEST(MapReader, LeavesHeadingAttributesOfAnotherTablesOutputAlone) {
  MapImport import;
  const std::string others = output("<TABLEREF name='u'/>", "<ATTRIBUTE name='a' value='1'/>");
  ASSERT_TRUE(import.run(rowmaps(others + simpleTable("t")), {}, {}, heading));
  EXPECT_EQ(outline(import.root()), "doc(item*(@id))");
}

TEST(MapReader, UsesTheFirstHeadingOnly) {
  MapImport import;
  const std::string twice = "<OUTPUT><HEADING/><HEADING><ATTRIBUTE name='a' value='1'/></HEADING></OUTPUT>";
  ASSERT_TRUE(import.run(rowmaps(twice + simpleTable("t")), {}, {}, heading | acceptOutput));
  EXPECT_EQ(outline(import.root()), "doc(item*(@id))");
}

TEST(MapReader, RefusesAHeadingAttributeWithoutName) {
  MapImport import;
  EXPECT_FALSE(import.run(mapWithHeading("<ATTRIBUTE name='a'/><ATTRIBUTE value='1'/>"), {}, {}, heading));
  expectBothTold(import, catalogue(1415, "name"));
  EXPECT_EQ(outline(import.root()), "doc(@a item*)");
}

TEST(MapReader, SkipsNamespaceEntriesOfTheHeadingAndNothingElse) {
  MapImport import;
  const char* entries =
      "<ATTRIBUTE name='xmlns' value='u'/><ATTRIBUTE name='xmlns:p' value='urn:p'/>"
      "<ATTRIBUTE name='xmlnsp' value='1'/><ATTRIBUTE name='xmln' value='2'/>";
  ASSERT_TRUE(import.run(mapWithHeading(entries), {}, {}, heading));
  EXPECT_EQ(outline(import.root()), "doc(@xmlnsp @xmln item*(@id))");
  EXPECT_EQ(declarations(import.root()), "=u p=urn:p");
}

TEST(MapReader, BindsThePrefixOfAHeadingAttribute) {
  MapImport import;
  ASSERT_TRUE(
      import.run(mapWithHeading(std::string(declaresP) + "<ATTRIBUTE name='p:a' value='1'/>"), {}, {}, heading));
  EXPECT_EQ(outline(import.root()), "doc(@p:a item*(@id))");
}

TEST(MapReader, RefusesAnUndeclaredPrefixOfAHeadingAttribute) {
  MapImport import;
  EXPECT_FALSE(import.run(mapWithHeading("<ATTRIBUTE name='q:a' value='1'/>"), {}, {}, heading));
  expectBothTold(import, catalogue(1444, "q:a"));
}

TEST(MapReader, NeedsARootForAHeadingAttribute) {
  const std::string rowless = "<TABLE name='t'>" + column("x", "/d/x") + "</TABLE>";
  MapImport import;
  EXPECT_FALSE(
      import.run(rowmaps(output("", "<ATTRIBUTE name='a' value='1'/>") + rowless), {}, {}, heading | acceptOutput));
  expectBothTold(import, catalogue(1423));
}

TEST(MapReader, NeedsNoRootForNamespaceEntriesOfTheHeading) {
  const std::string rowless = "<TABLE name='t'>" + column("x", "/p:d/x") + "</TABLE>";
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(output("", declaresP) + rowless), {}, {}, heading | acceptOutput)) << import.error();
  EXPECT_EQ(outline(import.root()), "p:d(x)");
}

// Columns

TEST(MapReader, SkipsOtherChildrenOfTheTable) {
  MapImport import;
  const std::string columns = "<REMARK>x</REMARK>" + column("x", "/d/x") + "<column/>" + column("y", "/d/y");
  ASSERT_TRUE(import.run(rowmaps(table("t", "/d", columns))));
  EXPECT_EQ(columnsOf(import.main()), "x y");
}

TEST(MapReader, ReadsAPathOfEachSyntaxAndTakesTheLast) {
  const struct {
    const char* paths;
    const char* xpath;
  } cases[] = {
      {"<PATH> /d/a\n</PATH>", "/d/a"},
      {"<PATH syntax=''>/d/a</PATH>", "/d/a"},
      {"<PATH syntax='xpath'>/d/a</PATH>", "/d/a"},
      {"<PATH>/d/a</PATH><PATH syntax='XPath'>/d/b</PATH>", "/d/b"},
      {"<PATH>/d/a</PATH><PATH syntax='XPathENR'>/d/b</PATH>", "/d/a"},
      {"<PATH syntax='XPathENR'>/d/b</PATH><PATH>/d/a</PATH>", "/d/a"},
  };
  for (const auto& each : cases) {
    MapImport import;
    const std::string only = "<COLUMN>" + std::string(each.paths) + std::string(integerType) + "</COLUMN>";
    ASSERT_TRUE(import.run(rowmaps(table("t", "/d", only)))) << each.paths;
    EXPECT_EQ(str(import.column(0)->getXPath()), each.xpath) << each.paths;
  }
}

TEST(MapReader, PrefersThePlainPathWithNamespaces) {
  const char* namespaces = "<NAMESPACES><NS id='1' prefix='p'>u</NS></NAMESPACES>";
  const struct {
    const char* paths;
    const char* xpath;
  } cases[] = {
      {"<PATH>/{1}d/a</PATH>", "/p:d/a"},
      {"<PATH syntax='XPathENR'>/{1}d/b</PATH>", "/p:d/b"},
      {"<PATH>/{1}d/a</PATH><PATH syntax='XPathENR'>/{1}d/b</PATH>", "/p:d/a"},
      {"<PATH> </PATH><PATH syntax='XPathENR'>/{1}d/b</PATH>", "/p:d/b"},
  };
  for (const auto& each : cases) {
    MapImport import;
    const std::string only = "<COLUMN>" + std::string(each.paths) + std::string(integerType) + "</COLUMN>";
    ASSERT_TRUE(import.run(rowmaps(namespaces + table("t", "/{1}d", only)))) << import.error();
    EXPECT_EQ(str(import.column(0)->getXPath()), each.xpath) << each.paths;
  }
}

TEST(MapReader, RefusesAnotherSyntaxOfAPath) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(table("t", "/d", "<COLUMN name='x'><PATH syntax='CSS'>/d/x</PATH></COLUMN>"))));
  expectBothTold(import, catalogue(1414, "PATH", "CSS"));
}

TEST(MapReader, BuildsAnExtendedPathWithoutNamespacesFromAnEmptyText) {
  MapImport import;
  const char* extended = "<COLUMN name='x'><PATH syntax='XPathENR'>/d/x</PATH><DATATYPE>integer</DATATYPE></COLUMN>";
  EXPECT_FALSE(import.run(rowmaps(table("t", "/d", extended))));
  expectBothTold(import, catalogue(1443, "/", ""));
}

TEST(MapReader, MakesUpTheNameOfAColumnWithoutOne) {
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(table("t", "/d", column("", "/d/x") + column("", "/d/@x") + column("", "/d/x")))));
  EXPECT_EQ(columnsOf(import.main()), "x x1 x2");
}

TEST(MapReader, RefusesAColumnNameUsedTwiceAndStopsThere) {
  MapImport import;
  const std::string columns = column("a", "/d/x") + column("a", "/d/y") + column("b", "/d/z");
  EXPECT_FALSE(import.run(rowmaps(table("t", "/d", columns))));
  expectBothTold(import, catalogue(267, "a"));
  EXPECT_EQ(columnsOf(import.main()), "a");
  EXPECT_EQ(outline(import.root()), "d*(x y)");
}

TEST(MapReader, GivesTheColumnItsPathAsWritten) {
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(table("t", "/d/r", column("x", "/d/r/x[2]/@y")))));
  EXPECT_EQ(str(import.column(0)->getXPath()), "/d/r/x[2]/@y");
  EXPECT_EQ(str(import.column(0)->getNode()->getXPath()), "/d/r/x/@y");
}

// Nodes are made for the steps behind an attribute; that the column's XPath leads nowhere shows only afterwards.
TEST(MapReader, RefusesAColumnPathThatDoesNotLeadThroughTheTree) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(table("t", "/d", column("x", "/d/@a/b/c/@b/d")))));
  expectBothTold(import, catalogue(1445, "@a"));
  EXPECT_EQ(columnsOf(import.main()), "x");
}

// Retain

std::string retainMap() {
  const std::string columns =
      "<COLUMN name='top' retain='YES'><PATH>/a/@k</PATH><DATATYPE>integer</DATATYPE></COLUMN>"
      "<COLUMN name='mid' retain='yes'><PATH>/a/b</PATH><DATATYPE>integer</DATATYPE></COLUMN>"
      "<COLUMN name='row' retain='yes'><PATH>/a/b/r</PATH><DATATYPE>integer</DATATYPE></COLUMN>"
      "<COLUMN name='side' retain='yes'><PATH>/a/s</PATH><DATATYPE>integer</DATATYPE></COLUMN>"
      "<COLUMN name='no' retain='no'><PATH>/a/b/@n</PATH><DATATYPE>integer</DATATYPE></COLUMN>"
      "<COLUMN name='in' retain='yes'><PATH>/a/b/r/x</PATH><DATATYPE>integer</DATATYPE></COLUMN>";
  return rowmaps(table("t", "/a/b/r", columns));
}

TEST(MapReader, TakesGroupLevelsOfRetainedColumnsFromTheirDistanceToTheRow) {
  MapImport import;
  ASSERT_TRUE(import.run(retainMap(), {}, {}, retain));
  EXPECT_EQ(columnsOf(import.main()), "top:2 mid:1 row side no in");
  EXPECT_FALSE(import.main()->getGroupExplicit());
}

TEST(MapReader, IgnoresRetainWithoutItsFlagAndWithAGroupByString) {
  MapImport without;
  ASSERT_TRUE(without.run(retainMap()));
  EXPECT_EQ(columnsOf(without.main()), "top mid row side no in");
  MapImport grouped;
  ASSERT_TRUE(grouped.run(retainMap(), {}, "a=no", retain));
  EXPECT_EQ(columnsOf(grouped.main()), "top mid row side no:1 in");
}

TEST(MapReader, IgnoresAllOtherFlags) {
  MapImport import;
  ASSERT_TRUE(import.run(retainMap(), {}, {}, 0x1FFFFFFF));
  EXPECT_EQ(columnsOf(import.main()), "top mid row side no in");
}

// Where texts go, and what stays

TEST(MapReader, KeepsATextThatTheCallerHadInALatePhase) {
  MapImport import;
  import.setError("mine");
  EXPECT_FALSE(import.run(rowmaps(tableWithRowPath("<TABLE-PATH>doc</TABLE-PATH>"))));
  EXPECT_EQ(import.error(), "mine");
  EXPECT_EQ(import.mainError(), catalogue(1443, "/", "d"));
}

TEST(MapReader, ReplacesATextThatTheCallerHadInAnEarlyPhase) {
  MapImport import;
  import.setError("mine");
  EXPECT_FALSE(import.run("<OTHER/>"));
  expectCallerTold(import, catalogue(1448, import.file().c_str()));
}

TEST(MapReader, LeavesATextOfTheCallerAloneOnSuccess) {
  MapImport import;
  import.setError("mine");
  EXPECT_TRUE(import.run(rowmaps(simpleTable("t"))));
  EXPECT_EQ(import.error(), "mine");
}

// A brace that is not closed has no message of its own, so the caller gets the main object's earlier one.
TEST(MapReader, CopiesTheEarlierTextWhenAFailureHasNone) {
  MapImport import;
  const char* namespaces = "<NAMESPACES><NS id='1' prefix='p'>u</NS></NAMESPACES>";
  EXPECT_FALSE(import.run(rowmaps(namespaces + table("t", "/{1doc", ""))));
  expectBothTold(import, "before");
}

TEST(MapReader, CanBeTriedAgainUntilThereIsARoot) {
  MapImport import;
  EXPECT_FALSE(import.run("<OTHER/>"));
  EXPECT_FALSE(import.run(rowmaps(simpleTable("t")), "none", "a=id"));
  EXPECT_TRUE(import.run(rowmaps(simpleTable("t"))));
  EXPECT_EQ(columnsOf(import.main()), "id");
  EXPECT_TRUE(import.main()->getGroupExplicit());
}

TEST(MapReader, CannotBeTriedAgainOnceThereIsARoot) {
  MapImport import;
  EXPECT_FALSE(import.run(rowmaps(table("t", "/d", column("x", "/d/x") + column("y", "/other")))));
  EXPECT_EQ(import.mainError(), catalogue(1443, "/d", "other"));
  EXPECT_FALSE(import.run(rowmaps(simpleTable("t"))));
  EXPECT_EQ(import.error(), catalogue(1422));
  EXPECT_EQ(outline(import.root()), "d*(x)");
  EXPECT_EQ(columnsOf(import.main()), "x");
}

// Bad files

TEST(MapReader, FailsClearlyOnFilesThatAreNoMaps) {
  const std::string deep = [] {
    std::string text;
    for (int i = 0; i < 1001; ++i) text += "<a>";
    for (int i = 0; i < 1001; ++i) text += "</a>";
    return text;
  }();
  const std::string map = rowmaps(simpleTable("t"));
  const std::string cases[] = {
      "",
      " \n",
      map.substr(0, map.size() / 2),
      map + map,
      std::string("\x7f\x45\x4c\x46\x02\x01\0\0\xff\xfe", 10),
      "<ROWMAPS version='1.9'><TABLE name='\xff\xfe'/></ROWMAPS>",
      deep,
      "<!DOCTYPE ROWMAPS [<!ENTITY e 'x'>]>" + map,
      "<!DOCTYPE ROWMAPS [<!ENTITY % e SYSTEM 'file:///etc/passwd'>]>" + map,
      "<ROWMAPS version='1.9' a='" + std::string(10'000'001, 'x') + "'/>",
  };
  for (const std::string& text : cases) {
    MapImport import;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(import.run(text)) << text.substr(0, 100);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    KvDom dom;
    EXPECT_FALSE(dom.loadFile(kv(import.file())));
    EXPECT_NE(str(dom.getErrorMessage()), "");
    expectCallerTold(import, catalogue(472, import.file().c_str(), dom.getErrorMessage().asCstr()));
  }
}

TEST(MapReader, AcceptsADocumentTypeWhoseDefinitionIsMissing) {
  MapImport import;
  const std::string map = "<!DOCTYPE ROWMAPS SYSTEM 'missing.dtd'>" + rowmaps(simpleTable("t"));
  EXPECT_TRUE(import.run(map)) << import.error();
}

TEST(MapReader, TakesHugeTexts) {
  const std::string name(1'000'000, 'n');
  MapImport import;
  ASSERT_TRUE(import.run(rowmaps(table("t", "/d", column(name, "/d/" + name)))));
  EXPECT_EQ(str(import.column(0)->getName()), name);
}

TEST(MapReader, ImportsAHundredThousandColumnsInASmallMultipleOfTheParse) {
  std::string columns;
  std::string groupBy;
  for (int i = 0; i < 100'000; ++i) {
    const std::string name = "c" + std::to_string(i);
    columns += column(name, (i % 2 ? "/d/r/@" : "/d/r/") + name);
    groupBy += name + "=" + name + " ";
  }
  MapImport import;
  writeFile(import.file(), rowmaps(table("t", "/d/r", columns)));
  const auto start = std::chrono::steady_clock::now();
  KvDom dom;
  ASSERT_TRUE(dom.loadFile(kv(import.file())));
  const auto parsed = std::chrono::steady_clock::now();
  ASSERT_TRUE(import.runFile(import.file(), {}, groupBy)) << import.error();
  const auto imported = std::chrono::steady_clock::now();
  EXPECT_EQ(import.main()->getSelectedColumns(), 100'000);
  EXPECT_EQ(import.column(0)->getIsGroupBy(), 100'000);
  // About 4 in an optimised build; sanitizers slow the import and not the parser. Searches would make it thousands.
  EXPECT_LT((imported - parsed) / (parsed - start), 50);
}

}  // namespace

// Tests `xdm tables`, XMLMaps as models, and what is said of a map that can't be imported.
#include "tool.h"

namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class Map : public ToolTest {
 protected:
  static std::string column(const std::string& name, const std::string& path, const std::string& type = "integer",
                            const std::string& attributes = "") {
    return "<COLUMN name=\"" + name + "\"" + attributes + "><PATH>" + path + "</PATH><DATATYPE>" + type +
           "</DATATYPE></COLUMN>\n";
  }

  std::string map(const std::string& content, const std::string& version = "1.9") const {
    return write("map.xml", "<ROWMAPS version=\"" + version + "\">\n" + content + "</ROWMAPS>");
  }

  /** A map with one table, whose first COLUMN stands on line 4. */
  std::string tableMap(const std::string& columns, const std::string& version = "1.9",
                       const std::string& rest = "") const {
    return map("<TABLE name=\"t\">\n<TABLE-PATH>/a/r</TABLE-PATH>\n" + columns + "</TABLE>\n" + rest, version);
  }

  /** The second line on standard error. */
  static std::string placeOf(const Words& words) {
    ProcessResult result = xdm(words);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.error, StartsWith("xdm: error: "));
    return result.error.substr(result.error.find('\n') + 1);
  }
};

TEST_F(Map, TablesAreNamedInDocumentOrder) {
  std::string two = map("<OUTPUT/><TABLE name=\"zoo\"/><TABLE/><OTHER name=\"x\"/><TABLE name=\"ant &amp; bee\"/>");
  EXPECT_EQ(outputOf({"tables", two}), "zoo\nant & bee\n");
}

TEST_F(Map, TablesOfAnythingElseAreAFailure) {
  EXPECT_EQ(errorOf({"tables", model}),
            "xdm: error: '" + model + "' is not an XMLMap: its root element is xdm, not ROWMAPS");
  EXPECT_EQ(errorOf({"tables", file("none")}),
            "xdm: error: cannot read the XMLMap '" + file("none") + "': No such file or directory");
  EXPECT_THAT(errorOf({"tables", write("cut", "<ROWMAPS>")}), HasSubstr("line 1, column "));
  EXPECT_THAT(errorOf({"tables", "-"}), HasSubstr("standard input"));
}

TEST_F(Map, TheFirstTableIsImportedOrTheNamedOne) {
  std::string two = map("<TABLE name=\"t\">" + column("k", "/a/@k") + "</TABLE><TABLE name=\"u\">" +
                        column("l", "/a/@l") + "</TABLE>");
  EXPECT_EQ(outputOf({"show", two}), "a\n  @k  [column k: integer]\n");
  EXPECT_EQ(outputOf({"show", two, "--table", ""}), "a\n  @k  [column k: integer]\n");
  EXPECT_EQ(outputOf({"show", two, "--table", "u"}), "a\n  @l  [column l: integer]\n");
}

TEST_F(Map, ColumnsOfTheCommandLineStandBehindThoseOfTheMap) {
  std::string one = tableMap(column("k", "/a/@k") + column("v", "/a/r/v"));
  EXPECT_EQ(outputOf({"columns", one, "--column", "/a/r=w", "--column-xpath", "v=/a/r[1]/v", "--format", "csv"}),
            "name,xpath,kind,type,maximumLength,groupBy,format,informat,default,validValues\r\n"
            "k,/a/@k,attribute,integer,0,0,,,,\r\n"
            "v,/a/r[1]/v,element,integer,0,0,,,,\r\n"
            "w,/a/r,element,string,0,0,,,,\r\n");
}

TEST_F(Map, RetainGivesGroupLevelsByDistance) {
  std::string one = tableMap(column("k", "/a/@k", "integer", " retain=\"yes\"") + column("v", "/a/r/v"));
  EXPECT_THAT(outputOf({"show", one, "--retain"}), HasSubstr("@k  [column k: integer, group 1]\n"));
  EXPECT_THAT(outputOf({"show", one}), HasSubstr("@k  [column k: integer]\n"));
}

TEST_F(Map, HeadingMakesAttributesOfTheRoot) {
  std::string output = "<OUTPUT><TABLEREF name=\"t\"/><HEADING><ATTRIBUTE name=\"v\" value=\"1\"/></HEADING></OUTPUT>";
  std::string one = tableMap(column("k", "/a/r/@k"), "1.9", output);
  EXPECT_THAT(outputOf({"show", one, "--heading"}), StartsWith("a\n  @v\n"));
  EXPECT_THAT(outputOf({"show", one}), StartsWith("a\n  r"));
}

TEST_F(Map, AcceptOutputTakesTheOutputOfAnotherTable) {
  std::string output =
      "<OUTPUT><TABLEREF name=\"u\"/><HEADING><ATTRIBUTE name=\"xmlns\" value=\"urn:d\"/></HEADING></OUTPUT>";
  std::string one = tableMap(column("k", "/a/r/@k"), "1.9", output);
  EXPECT_THAT(outputOf({"query", "to-rows", one, "--accept-output"}), HasSubstr("element namespace \"urn:d\""));
  EXPECT_THAT(outputOf({"query", "to-rows", one}), testing::Not(HasSubstr("urn:d")));
}

TEST_F(Map, AFailedColumnIsNamedWithItsLine) {
  const std::string good = column("good", "/a/r/x");
  const struct {
    std::string bad;
    const char* number;
    const char* where;
  } cases[] = {
      {column("bad", "/a/r/y", "money"), "XDM1440", "column 'bad': while reading what it says"},
      {"<COLUMN name=\"bad\"><PATH>/a/r/y</PATH></COLUMN>\n", "XDM1415", "column 'bad': while reading what it says"},
      {column("bad", "/b/r/y"), "XDM1443", "column 'bad': while building its path"},
      {column("bad", "/a/r/p:y"), "XDM1444", "column 'bad': while building its path"},
      {column("bad", "/a/@k/y"), "XDM1445", "column 'bad': while building its path"},
      {column("good", "/a/r/y"), "XDM267", "column 'good': while selecting it"},
  };
  for (const auto& one : cases) {
    std::string bad = tableMap(good + "\n" + one.bad + good);
    EXPECT_THAT(errorOf({"show", bad}), StartsWith(std::string("xdm: error: ") + one.number + ": "));
    EXPECT_EQ(placeOf({"show", bad}), bad + ":6: " + one.where + "\n");
  }
}

TEST_F(Map, AFailureWithoutATextIsSaidInTheToolsWords) {
  std::string bad = tableMap(column("bad", "/a/r/{x"), "2.1", "<NAMESPACES/>");
  EXPECT_THAT(errorOf({"show", bad}), StartsWith("xdm: error: the import of '" + bad + "' failed; usually "));
  EXPECT_EQ(placeOf({"show", bad}),
            bad + ":4: column 'bad': while building its path; a brace is opened there and never closed\n");
}

TEST_F(Map, AFailedTablePathIsNamedWithItsLine) {
  std::string bad = map("<TABLE name=\"t\">\n<REMARK/>\n<TABLE-PATH>a/r</TABLE-PATH></TABLE>");
  EXPECT_THAT(errorOf({"show", bad}), StartsWith("xdm: error: XDM1443: "));
  EXPECT_EQ(placeOf({"show", bad}), bad + ":4: TABLE-PATH: while building the row's path\n");
}

TEST_F(Map, AFailedHeadingIsNamedWithItsLine) {
  for (const char* name : {"p:w", ""}) {
    std::string bad = tableMap(column("k", "/a/r/@k"), "1.9",
                               "<OUTPUT><TABLEREF name=\"t\"/><HEADING>\n<ATTRIBUTE name=\"v\" value=\"1\"/>\n"
                               "<ATTRIBUTE name=\"" +
                                   std::string(name) + "\" value=\"1\"/></HEADING></OUTPUT>");
    EXPECT_EQ(placeOf({"show", bad, "--heading"}), bad + ":8: HEADING: while making the root's attributes\n");
  }
}

TEST_F(Map, AHeadingWithoutARootIsNamedWithItsLine) {
  std::string bad =
      map("<OUTPUT><TABLEREF name=\"t\"/><HEADING>\n<ATTRIBUTE name=\"v\" value=\"1\"/></HEADING></OUTPUT>"
          "<TABLE name=\"t\">" +
          column("k", "/a/r/@k") + "</TABLE>");
  EXPECT_THAT(errorOf({"show", bad, "--heading"}), StartsWith("xdm: error: XDM1423: "));
  EXPECT_EQ(placeOf({"show", bad, "--heading"}), bad + ":3: HEADING: while making the root's attributes\n");
}

TEST_F(Map, AWrongNumberOfANamespaceIsNamedWithItsLine) {
  std::string bad = tableMap(column("k", "/a/r/@k"), "2.1",
                             "<NAMESPACES>\n<NS id=\"1\">urn:a</NS>\n<NS id=\"3\">urn:b</NS></NAMESPACES>");
  EXPECT_THAT(errorOf({"show", bad}), StartsWith("xdm: error: XDM1420: "));
  EXPECT_EQ(placeOf({"show", bad}), bad + ":8: NS: while reading the namespaces\n");
}

TEST_F(Map, AGroupOfAColumnThatIsNotThereIsWarnedOf) {
  std::string one = tableMap(column("k", "/a/r/@k"));
  ProcessResult result = xdm({"show", one, "--group-by", "a=k b=none"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error, "xdm: warning: --group-by: the table has no column 'none'\n");
}

TEST_F(Map, FailuresOfTheWholeMapNameNoLine) {
  const std::string good = column("k", "/a/r/@k");
  const struct {
    std::string path;
    Words options;
    const char* error;
  } cases[] = {
      {write("cut.xml", "<ROWMAPS version=\"1.9\"><TABLE>"), {}, "XDM472: "},
      {write("version.xml", "<ROWMAPS version=\"3\"/>"), {}, "XDM1449: "},
      {write("none.xml", "<ROWMAPS version=\"1.9\"/>"), {}, "XDM1450: "},
      {tableMap(good), {"--table", "u"}, "XDM1450: "},
      {write("bare.xml", "<ROWMAPS version=\"1.9\"><TABLE name=\"t\"/></ROWMAPS>"), {}, "XDM1452: "},
      {tableMap(good), {"--group-by", "a="}, "Failed to parse groupBy string 'a=' ("},
  };
  for (const auto& one : cases) {
    Words words = {"show", one.path};
    words.insert(words.end(), one.options.begin(), one.options.end());
    EXPECT_THAT(errorOf(words), StartsWith(std::string("xdm: error: ") + one.error));
    EXPECT_EQ(placeOf(words), "");
  }
}

}  // namespace

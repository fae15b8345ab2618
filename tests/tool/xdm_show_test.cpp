// Tests `xdm show`, and the options that change a model as far as the tree shows them.
#include "tool.h"

namespace {

class Show : public ToolTest {};

TEST_F(Show, PrintsOneNodeALineWithAttributesBeforeChildren) {
  EXPECT_EQ(outputOf({"show", model}),
            "library\n"
            "  @city\n"
            "  shelf\n"
            "    @subject\n"
            "    book  [row]\n"
            "      @isbn\n"
            "      title\n"
            "      author\n");
}

TEST_F(Show, MarksTheSelectedColumnsWithTypeLengthAndGroupLevel) {
  std::string map = write("map.xml", R"(<ROWMAPS version="1.9"><TABLE name="t"><TABLE-PATH>/a/r</TABLE-PATH>
    <COLUMN name="k"><PATH>/a/@k</PATH><DATATYPE>integer</DATATYPE></COLUMN>
    <COLUMN name="price"><PATH>/a/r/p</PATH><DATATYPE>string</DATATYPE><LENGTH>12</LENGTH></COLUMN>
    <COLUMN name="again"><PATH>/a/r/p</PATH><DATATYPE>date</DATATYPE></COLUMN></TABLE></ROWMAPS>)");
  EXPECT_EQ(outputOf({"show", map, "--group-by", "g=k h=price"}),
            "a\n"
            "  @k  [column k: integer, group 2]\n"
            "  r  [row]\n"
            "    p  [column price: string(12), group 1]  [column again: datetime]\n");
}

TEST_F(Show, PrintsQualifiedNames) {
  std::string qualified = write("q.xdm", R"(<xdm version="1.0"><element name="a" prefix="">
    <namespace prefix="" uri="urn:d"/><namespace prefix="p" uri="urn:p"/>
    <attribute name="k" prefix="p"/><element name="b" prefix="p"/></element></xdm>)");
  EXPECT_EQ(outputOf({"show", qualified}), "a\n  @p:k\n  p:b\n");
}

TEST_F(Show, ReplacesTheMarkOfTheRow) {
  EXPECT_THAT(outputOf({"show", model, "--row", "/library/shelf"}),
              testing::AllOf(testing::HasSubstr("\n  shelf  [row]\n"), testing::HasSubstr("\n    book\n")));
}

TEST_F(Show, KeepsTheOrderOfPlainAndGroupColumns) {
  std::string printed = outputOf({"show", model, "--group-column", title + "=b", "--column", title + "=a",
                                  "--group-column", title, "--column", title});
  EXPECT_THAT(printed, testing::HasSubstr("title  [column b: string, group 1]  [column a: string]"
                                          "  [column title: string, group 1]  [column title1: string]\n"));
}

TEST_F(Show, PrintsAsManyLevelsAsAModelMayHave) {
  std::string open;
  std::string close;
  for (int level = 0; level < 999; ++level) {
    open += "<element name=\"e\">";
    close += "</element>";
  }
  std::string printed = outputOf({"show", "-"}, "<xdm version=\"1.0\">" + open + close + "</xdm>");
  EXPECT_THAT(printed, testing::EndsWith("\n" + std::string(2 * 998, ' ') + "e\n"));
}

TEST_F(Show, TakesAMapFromAPipe) {
  write("map.xml", R"(<ROWMAPS version="1.9"><TABLE name="t"><COLUMN name="k"><PATH>/a/@k</PATH>
    <DATATYPE>integer</DATATYPE></COLUMN></TABLE></ROWMAPS>)");
  ProcessResult result =
      runProcess({"bash", "-c", "exec \"$0\" show --table t <(cat \"$1\")", XDM_TOOL, file("map.xml")});
  EXPECT_EQ(result.output, "a\n  @k  [column k: integer]\n") << result.error;
}

}  // namespace

// Tests `xdm columns`.
#include "tool.h"

namespace {

class Columns : public ToolTest {
 protected:
  const std::string map = write("map.xml", R"(<ROWMAPS version="1.9"><TABLE name="t"><TABLE-PATH>/a/r</TABLE-PATH>
    <COLUMN name="day"><PATH>/a/r/d</PATH><DATATYPE>date</DATATYPE><INFORMAT>B8601DA</INFORMAT></COLUMN>
    <COLUMN name="größe"><PATH>/a/@k</PATH><DATATYPE>string</DATATYPE><LENGTH>3</LENGTH><DEFAULT>M,</DEFAULT>
      <ENUM><VALUE>S</VALUE><VALUE>M,</VALUE></ENUM></COLUMN></TABLE></ROWMAPS>)");
};

TEST_F(Columns, PrintsAnAlignedTable) {
  EXPECT_EQ(outputOf({"columns", map, "--group-by", "x=größe"}),
            "name   xpath   kind       type      maximumLength  groupBy  format      informat  default  validValues\n"
            "day    /a/r/d  element    datetime  0              0        yyyy-MM-dd  yyyyMMdd\n"
            "größe  /a/@k   attribute  string    3              1                              M,       S|M,\n");
}

TEST_F(Columns, PrintsCsv) {
  EXPECT_EQ(outputOf({"columns", map, "--format", "csv"}),
            "name,xpath,kind,type,maximumLength,groupBy,format,informat,default,validValues\r\n"
            "day,/a/r/d,element,datetime,0,0,yyyy-MM-dd,yyyyMMdd,,\r\n"
            "größe,/a/@k,attribute,string,3,0,,,\"M,\",\"S|M,\"\r\n");
}

TEST_F(Columns, PrintsJson) {
  EXPECT_EQ(outputOf({"columns", map, "--format", "json"}), R"([
  {
    "name": "day",
    "xpath": "/a/r/d",
    "kind": "element",
    "type": "datetime",
    "maximumLength": 0,
    "groupBy": 0,
    "format": "yyyy-MM-dd",
    "informat": "yyyyMMdd",
    "default": "",
    "validValues": []
  },
  {
    "name": "größe",
    "xpath": "/a/@k",
    "kind": "attribute",
    "type": "string",
    "maximumLength": 3,
    "groupBy": 0,
    "format": "",
    "informat": "",
    "default": "M,",
    "validValues": [
      "S",
      "M,"
    ]
  }
]
)");
}

TEST_F(Columns, OfAModelWithoutColumnsAreNone) {
  EXPECT_EQ(outputOf({"columns", model, "--format", "json"}), "[]\n");
  EXPECT_EQ(outputOf({"columns", model, "--format", "csv"}),
            "name,xpath,kind,type,maximumLength,groupBy,format,informat,default,validValues\r\n");
}

TEST_F(Columns, KnowTheTypeOfASelectedNode) {
  std::string printed = outputOf({"columns", model, "--format", "csv", "--column", title, "--column", isbn});
  EXPECT_THAT(printed, testing::HasSubstr("\r\ntitle,/library/shelf/book/title,element,string,0,0,"));
  EXPECT_THAT(printed, testing::HasSubstr("\r\nisbn,/library/shelf/book/@isbn,attribute,none,0,0,"));
}

TEST_F(Columns, TakeTheXPathThatTheyAreGiven) {
  std::string xpath = "/library/shelf[@subject=\"Maps\"]/book/title";
  std::string printed = outputOf({"columns", model, "--column", title + "=t", "--column", title + "=u",
                                  "--column-xpath", "t=" + xpath, "--format", "json"});
  EXPECT_THAT(printed, testing::HasSubstr(R"("xpath": "/library/shelf[@subject=\"Maps\"]/book/title")"));
  EXPECT_THAT(printed, testing::HasSubstr(R"("xpath": "/library/shelf/book/title")"));
}

}  // namespace

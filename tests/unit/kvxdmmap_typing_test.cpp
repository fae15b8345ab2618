// Tests kvxdmmap_typing.cpp: what the children of a COLUMN make of its type, length, patterns, default and values.
#include <gtest/gtest.h>

#include "xmlmap.h"

namespace {

/** One column with the children `typing`, imported. */
struct TypedColumn {
  explicit TypedColumn(std::string_view typing) {
    ok = import.run(rowmaps(table("t", "/d", ::column("x", "/d/x", typing))));
    if (import.root()) column = import.column(0);
  }

  MapImport import;
  bool ok;
  XDMColumn* column = nullptr;
};

void expectRefused(std::string_view typing, const std::string& text) {
  TypedColumn typed(typing);
  EXPECT_FALSE(typed.ok) << typing;
  EXPECT_EQ(typed.import.error(), text);
  EXPECT_EQ(typed.import.mainError(), text);
  EXPECT_EQ(typed.column, nullptr);
  EXPECT_EQ(outline(typed.import.root()), "d*");
}

std::string element(std::string_view name, std::string_view text) {
  return "<" + std::string(name) + ">" + std::string(text) + "</" + std::string(name) + ">";
}

std::string valuesOf(XDMColumn* column) {
  std::string text;
  for (int i = 0; i < column->getValidValues(); ++i) text += "[" + str(column->getValidValue(i)) + "]";
  return text;
}

// Types

TEST(MapTyping, ReadsEachDataTypeInAnyCase) {
  const struct {
    const char* name;
    kvbType type;
    const char* pattern;
  } cases[] = {
      {"date", 5, "yyyy-MM-dd"}, {"Date", 5, "yyyy-MM-dd"}, {" DATETIME\n", 5, "yyyy-MM-dd'T'HH:mm:ss"},
      {"time", 5, "HH:mm:ss"},   {"Double", 3, ""},         {"INTEGER", 2, ""},
      {"string", 4, ""},
  };
  for (const auto& each : cases) {
    TypedColumn typed(element("DATATYPE", each.name) + "<LENGTH>7</LENGTH>");
    ASSERT_TRUE(typed.ok) << each.name;
    EXPECT_EQ(typed.column->getType(), each.type) << each.name;
    EXPECT_EQ(str(typed.column->getFormat()), each.pattern);
    EXPECT_EQ(str(typed.column->getInformat()), each.pattern);
  }
}

TEST(MapTyping, ReadsEachTypeInAnyCase) {
  TypedColumn character("<TYPE> Character </TYPE><LENGTH>7</LENGTH>");
  ASSERT_TRUE(character.ok);
  EXPECT_EQ(character.column->getType(), 4);
  TypedColumn numeric("<TYPE>NUMERIC</TYPE>");
  ASSERT_TRUE(numeric.ok);
  EXPECT_EQ(numeric.column->getType(), 3);
}

TEST(MapTyping, LetsADataTypeWinOverATypeWhereverItStands) {
  const struct {
    const char* typing;
    kvbType type;
  } cases[] = {
      {"<TYPE>character</TYPE><DATATYPE>integer</DATATYPE>", 2},
      {"<DATATYPE>double</DATATYPE><TYPE>character</TYPE>", 3},
      {"<TYPE>numeric</TYPE><DATATYPE>integer</DATATYPE>", 2},
      {"<DATATYPE>integer</DATATYPE><TYPE>numeric</TYPE>", 2},
      {"<DATATYPE>integer</DATATYPE><DATATYPE>double</DATATYPE>", 3},
      {"<TYPE>numeric</TYPE><TYPE>character</TYPE>", 3},
  };
  for (const auto& each : cases) {
    TypedColumn typed(each.typing);
    ASSERT_TRUE(typed.ok) << each.typing;
    EXPECT_EQ(typed.column->getType(), each.type) << each.typing;
  }
}

TEST(MapTyping, RefusesUnknownTypes) {
  expectRefused("<DATATYPE> decimal </DATATYPE>", catalogue(1440, "DATATYPE", "decimal"));
  expectRefused("<DATATYPE/>", catalogue(1440, "DATATYPE", ""));
  expectRefused("<TYPE>char</TYPE>", catalogue(1440, "TYPE", "char"));
  expectRefused("<DATATYPE>integer</DATATYPE><TYPE> text</TYPE>", catalogue(1440, "TYPE", "text"));
}

TEST(MapTyping, NeedsAType) {
  expectRefused("", catalogue(1415, "TYPE"));
  expectRefused("<LENGTH>7</LENGTH><DEFAULT>x</DEFAULT>", catalogue(1415, "TYPE"));
}

TEST(MapTyping, RefusesUnexpectedElements) {
  expectRefused("<datatype>integer</datatype>", catalogue(1446, "COLUMN", "datatype"));
  expectRefused("<DATATYPE>integer</DATATYPE><DESCRIPTION/>", catalogue(1446, "COLUMN", "DESCRIPTION"));
  expectRefused("<x:TYPE xmlns:x='u'>numeric</x:TYPE>", catalogue(1446, "COLUMN", "x:TYPE"));
}

TEST(MapTyping, ReportsTheFirstFailureInDocumentOrder) {
  expectRefused("<LENGTH>a</LENGTH><TYPE>b</TYPE>", catalogue(1414, "LENGTH", "a"));
  expectRefused("<TYPE>b</TYPE><LENGTH>a</LENGTH>", catalogue(1440, "TYPE", "b"));
}

// Length

TEST(MapTyping, AppliesAPositiveLengthToAString) {
  TypedColumn typed("<DATATYPE>string</DATATYPE><LENGTH>12</LENGTH>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(typed.column->getMaximumLength(), 12);
}

TEST(MapTyping, ReadsALengthAsANumberWithBlanksAroundIt) {
  TypedColumn typed("<DATATYPE>string</DATATYPE><LENGTH>3</LENGTH><LENGTH> +12\n</LENGTH>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(typed.column->getMaximumLength(), 12);
}

TEST(MapTyping, AcceptsALengthOfZeroOrLessWithoutApplyingIt) {
  for (const char* length : {"0", "-2", "-2147483648"}) {
    TypedColumn typed("<DATATYPE>string</DATATYPE>" + element("LENGTH", length));
    ASSERT_TRUE(typed.ok) << length;
    EXPECT_EQ(typed.column->getMaximumLength(), 0) << length;
  }
}

TEST(MapTyping, NeedsALengthForAString) {
  expectRefused("<DATATYPE>string</DATATYPE>", catalogue(1447));
  expectRefused("<TYPE>character</TYPE>", catalogue(1447));
}

TEST(MapTyping, CountsALengthOfMinusOneAsAbsent) {
  expectRefused("<DATATYPE>string</DATATYPE><LENGTH>-1</LENGTH>", catalogue(1447));
}

TEST(MapTyping, RefusesALengthThatIsNoNumber) {
  for (const char* length : {"12abc", "", " ", "1.5", "2147483648", "--1"}) {
    expectRefused("<DATATYPE>string</DATATYPE>" + element("LENGTH", length), catalogue(1414, "LENGTH", length));
  }
}

TEST(MapTyping, ReportsNoLengthForOtherTypes) {
  TypedColumn typed("<DATATYPE>double</DATATYPE><LENGTH>12</LENGTH>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(typed.column->getMaximumLength(), 0);
}

// Formats and informats

TEST(MapTyping, KnowsEachPatternByItsName) {
  const struct {
    const char* name;
    const char* pattern;
  } cases[] = {
      {"B8601DA", "yyyyMMdd"},
      {"B8601DN", "yyyyMMdd"},
      {"B8601DT", "yyyyMMdd'T'HHmmss"},
      {"B8601DZ", "yyyyMMdd'T'HHmmssZ"},
      {"B8601LZ", "HHmmssZ"},
      {"B8601TM", "HHmmss"},
      {"B8601TZ", "HHmmssZ"},
      {"DATEAMPM", "ddMMMyy:hh:mm:ss a"},
      {"DATETIME", "ddMMMyy:hh:mm:ss"},
      {"E8601DA", "yyyy-MM-dd"},
      {"E8601DN", "yyyy-MM-dd"},
      {"E8601DT", "yyyy-MM-dd'T'HH:mm:ss"},
      {"E8601DZ", "yyyy-MM-dd'T'HH:mm:ssZ"},
      {"E8601LZ", "HH:mm:ssZ"},
      {"E8601TM", "HH:mm:ss"},
      {"E8601TZ", "HH:mm:ssZ"},
      {" e8601dt ", "yyyy-MM-dd'T'HH:mm:ss"},
      {"dateAmPm", "ddMMMyy:hh:mm:ss a"},
  };
  for (const auto& each : cases) {
    TypedColumn format(std::string(integerType) + element("FORMAT", each.name));
    ASSERT_TRUE(format.ok) << each.name;
    EXPECT_EQ(str(format.column->getFormat()), each.pattern) << each.name;
    EXPECT_EQ(str(format.column->getInformat()), "");
    TypedColumn informat(std::string(integerType) + element("INFORMAT", each.name));
    ASSERT_TRUE(informat.ok) << each.name;
    EXPECT_EQ(str(informat.column->getInformat()), each.pattern) << each.name;
    EXPECT_EQ(str(informat.column->getFormat()), "");
  }
}

TEST(MapTyping, DropsTheFirstAndTheLastCharacterOfAPatternInBraces) {
  const struct {
    const char* text;
    const char* pattern;
  } cases[] = {
      {"{dd.MM.yyyy}", "dd.MM.yyyy"}, {" {HH} ", "HH"}, {"{ab", "a"}, {"{x", ""}, {"{}", ""}, {"{{}}", "{}"}, {"", ""},
  };
  for (const auto& each : cases) {
    TypedColumn typed(std::string(integerType) + element("FORMAT", each.text));
    ASSERT_TRUE(typed.ok) << each.text;
    EXPECT_EQ(str(typed.column->getFormat()), each.pattern) << each.text;
  }
}

TEST(MapTyping, RefusesUnknownPatternNames) {
  expectRefused("<FORMAT>{</FORMAT>", catalogue(1440, "FORMAT", "{"));
  expectRefused("<FORMAT> DATE9 </FORMAT>", catalogue(1440, "FORMAT", "DATE9"));
  expectRefused("<INFORMAT>yyyy</INFORMAT>", catalogue(1440, "INFORMAT", "yyyy"));
}

TEST(MapTyping, LetsAPatternReplaceAnEarlierOneAndADefaultOfTheTypeFillTheGap) {
  const struct {
    const char* typing;
    const char* format;
    const char* informat;
  } cases[] = {
      {"<INFORMAT>B8601DA</INFORMAT><DATATYPE>date</DATATYPE>", "yyyy-MM-dd", "yyyyMMdd"},
      {"<DATATYPE>date</DATATYPE><INFORMAT>B8601DA</INFORMAT>", "yyyy-MM-dd", "yyyyMMdd"},
      {"<DATATYPE>date</DATATYPE><FORMAT>{yy}</FORMAT><FORMAT>{MM}</FORMAT>", "MM", "yyyy-MM-dd"},
      {"<DATATYPE>date</DATATYPE><DATATYPE>time</DATATYPE>", "yyyy-MM-dd", "yyyy-MM-dd"},
      {"<DATATYPE>date</DATATYPE><FORMAT>  </FORMAT>", "yyyy-MM-dd", "yyyy-MM-dd"},
      {"<DATATYPE>date</DATATYPE><FORMAT>{}</FORMAT>", "", "yyyy-MM-dd"},
      {"<FORMAT>{}</FORMAT><DATATYPE>date</DATATYPE>", "yyyy-MM-dd", "yyyy-MM-dd"},
  };
  for (const auto& each : cases) {
    TypedColumn typed(each.typing);
    ASSERT_TRUE(typed.ok) << each.typing;
    EXPECT_EQ(str(typed.column->getFormat()), each.format) << each.typing;
    EXPECT_EQ(str(typed.column->getInformat()), each.informat) << each.typing;
  }
}

// Default and valid values

TEST(MapTyping, TrimsADefaultUnlessItIsBlankAltogether) {
  const struct {
    const char* text;
    const char* value;
  } cases[] = {{" a b ", "a b"}, {"  ", "  "}, {"", ""}};
  for (const auto& each : cases) {
    TypedColumn typed(std::string(integerType) + element("DEFAULT", each.text));
    ASSERT_TRUE(typed.ok);
    EXPECT_EQ(str(typed.column->getDefault()), each.value);
  }
}

TEST(MapTyping, KeepsValidValuesUntrimmedInOrder) {
  TypedColumn typed(std::string(integerType) +
                    "<ENUM><VALUE>b</VALUE><OTHER>x</OTHER><VALUE> a </VALUE><VALUE/><VALUE>b</VALUE></ENUM>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(valuesOf(typed.column), "[b][ a ][][b]");
}

TEST(MapTyping, ReplacesValidValuesByThoseOfALaterEnumeration) {
  TypedColumn typed(std::string(integerType) +
                    "<ENUM><VALUE>a</VALUE><VALUE>b</VALUE></ENUM>"
                    "<ENUM><VALUE>c</VALUE></ENUM><ENUM/><DEFAULT>c</DEFAULT>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(valuesOf(typed.column), "[c]");
}

TEST(MapTyping, ChecksNoDefaultAgainstAnEnumerationWithoutValues) {
  TypedColumn typed(std::string(integerType) + "<ENUM><value>a</value></ENUM><DEFAULT>z</DEFAULT>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(valuesOf(typed.column), "");
  EXPECT_EQ(str(typed.column->getDefault()), "z");
}

TEST(MapTyping, AcceptsADefaultThatIsAValidValue) {
  TypedColumn typed(std::string(integerType) + "<DEFAULT>b</DEFAULT><ENUM><VALUE>a</VALUE><VALUE>b</VALUE></ENUM>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(str(typed.column->getDefault()), "b");
}

TEST(MapTyping, RefusesADefaultThatIsNoValidValue) {
  const std::string values = std::string(integerType) + "<ENUM><VALUE>Yes</VALUE><VALUE> </VALUE></ENUM>";
  expectRefused(values + "<DEFAULT>yes</DEFAULT>", catalogue(1414, "DEFAULT", "yes"));
  expectRefused(values + "<DEFAULT>  </DEFAULT>", catalogue(1414, "DEFAULT", "  "));
}

TEST(MapTyping, AcceptsADefaultOfBlanksAmongTheValidValues) {
  TypedColumn typed(std::string(integerType) + "<ENUM><VALUE>a</VALUE><VALUE> </VALUE></ENUM><DEFAULT> </DEFAULT>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(str(typed.column->getDefault()), " ");
}

TEST(MapTyping, ChecksTypeBeforeLengthBeforeDefault) {
  const std::string misfit = "<ENUM><VALUE>a</VALUE></ENUM><DEFAULT>z</DEFAULT>";
  expectRefused(misfit, catalogue(1415, "TYPE"));
  expectRefused("<DATATYPE>string</DATATYPE>" + misfit, catalogue(1447));
  expectRefused("<DATATYPE>string</DATATYPE><LENGTH>1</LENGTH>" + misfit, catalogue(1414, "DEFAULT", "z"));
}

TEST(MapTyping, StartsAfreshWithEachColumn) {
  MapImport import;
  const std::string full =
      "<DATATYPE>string</DATATYPE><LENGTH>3</LENGTH><FORMAT>{f}</FORMAT><INFORMAT>{i}</INFORMAT>"
      "<DEFAULT>a</DEFAULT><ENUM><VALUE>a</VALUE></ENUM>";
  ASSERT_TRUE(import.run(rowmaps(table("t", "/d", column("x", "/d/x", full) + column("y", "/d/y")))));
  XDMColumn* second = import.column(1);
  EXPECT_EQ(second->getType(), 2);
  EXPECT_EQ(str(second->getFormat()) + str(second->getInformat()) + str(second->getDefault()), "");
  EXPECT_EQ(second->getValidValues(), 0);
}

TEST(MapTyping, LeavesTheNodeUntyped) {
  TypedColumn typed("<DATATYPE>date</DATATYPE><DEFAULT>x</DEFAULT>");
  ASSERT_TRUE(typed.ok);
  EXPECT_EQ(typed.column->getNode()->getType(), 4);
  EXPECT_EQ(str(typed.column->getNode()->getFormat()), "");
  EXPECT_EQ(str(typed.column->getNode()->getDefault()), "");
}

}  // namespace

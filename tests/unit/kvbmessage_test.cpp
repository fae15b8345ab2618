// Tests the message catalogue: kvbmessage.cpp.
#include <kvxbase/kvbmessage.h>

#include <gtest/gtest.h>

#include <fstream>
#include <initializer_list>
#include <set>
#include <string>

#include "allocation_faults.h"

namespace {

constexpr const char* none = nullptr;

template <class... Arguments>
std::string message(int number, Arguments... arguments) {
  KvbString text = kvb_get_message("kvbmessage_test", __LINE__, "XML Data Model", number, arguments...,
                                   static_cast<const char*>(nullptr));
  return text.asCstr();
}

struct Case {
  int number;
  const char* first;
  const char* second;
  const char* third;
  const char* text;
};

const Case cases[] = {
    {29, "(XDM Root)", none, none,
     "XDM29: Memory ran out while making \"(XDM Root)\". Give the program more memory or use a smaller model, then try "
     "again."},
    {267, "city", none, none,
     "XDM267: The column name \"city\" cannot be used: it is empty or another column has it already. Select the node "
     "with another name."},
    {463, "/tmp/a.xdm", none, none,
     "XDM463: The file \"/tmp/a.xdm\" could not be written. Check that its folder exists, that you may write there and "
     "that the disk has room."},
    {472, "m.map", "line 3, column 7: no element found", none,
     "XDM472: The XMLMap file \"m.map\" could not be read: \"line 3, column 7: no element found\". Check the path, or "
     "correct the file where the reason says it is wrong."},
    {1414, "LENGTH", "12abc", none,
     "XDM1414: The XMLMap item \"LENGTH\" has the value \"12abc\", which is not allowed there. A syntax is XPath or "
     "XPathENR, a table path leads to an element, a LENGTH is a whole number and a DEFAULT is one of the column's "
     "valid values."},
    {1415, "TYPE", none, none,
     "XDM1415: The XMLMap item \"TYPE\" is missing or empty. Fill it in: a TABLE-PATH needs a path, a heading "
     "attribute a name and a column a TYPE or DATATYPE."},
    {1420, none, none, none,
     "XDM1420: The XMLMap's namespace numbers do not fit together. Number the NS elements 1, 2, 3 and so on in this "
     "order, and use only these numbers in the braces of a path."},
    {1422, none, none, none,
     "XDM1422: The model has a root element already, and is filled only once. Use a new model for each document or "
     "XMLMap."},
    {1423, none, none, none,
     "XDM1423: The model is empty: it has no root element. Load an XDM document or import an XMLMap first."},
    {1424, "", none, none,
     "XDM1424: The XDM document's version \"\" cannot be read. Set the attribute version of its root element to 1.0, "
     "or save the document again with this release."},
    {1425, none, none, none,
     "XDM1425: There is no valid root element. An XDM document needs the root element xdm with one element inside; to "
     "check an XPath, fill the model first."},
    {1426, "xdm", "element", none,
     "XDM1426: The first element inside \"xdm\" must be \"element\", but it is another one. Correct the XDM document."},
    {1427, "xdm", none, none,
     "XDM1427: There is more than one element inside \"xdm\". Leave only one of them in the XDM document."},
    {1428, "a.xdm", none, none,
     "XDM1428: The XDM document \"a.xdm\" could not be read. Check the path, your right to read the file and that it "
     "is XML."},
    {1429, none, none, none,
     "XDM1429: The text could not be read as an XDM document. Check that it is complete, well-formed XML in UTF-8."},
    {1430, none, none, none,
     "XDM1430: The XDM document could not be written as text. Give the program more memory, then try again."},
    {1431, "xdm", none, none,
     "XDM1431: A document with the root element \"xdm\" could not be started. Give the program more memory, then try "
     "again."},
    {1432, "default namespace", none, none,
     "XDM1432: The item \"default namespace\" could not be written into the XDM document. Check that its value holds "
     "only characters that XML allows, in UTF-8, and that there is enough memory."},
    {1433, "city", none, none,
     "XDM1433: The column \"city\" could not be added to the selected columns. Give the program more memory, then try "
     "again."},
    {1434, "(XPath Step)", "city", none,
     "XDM1434: The item \"(XPath Step)\" could not be added to its list: \"city\". Give the program more memory, then "
     "try again."},
    {1435, "attribute", "id", none,
     "XDM1435: The \"attribute\" named \"id\" could not be written into the XDM document. Check that its name holds "
     "only characters that XML allows, in UTF-8, and that there is enough memory."},
    {1437, "element", "book", none,
     "XDM1437: The namespace URI of the \"element\" named \"book\" could not be written into the XDM document. Check "
     "that it holds only characters that XML allows, in UTF-8, and that there is enough memory."},
    {1438, "namespace", "default namespace", none,
     "XDM1438: The namespace part of the item \"namespace\" could not be written into the XDM document: \"default "
     "namespace\". Check that its prefix and URI hold only characters that XML allows, in UTF-8, and that there is "
     "enough memory."},
    {1439, "name", "attribute", none,
     "XDM1439: The XDM document has no attribute \"name\", or an empty one, on the element \"attribute\". Fill the "
     "attribute in."},
    {1440, "DATATYPE", "number", none,
     "XDM1440: The XMLMap item \"DATATYPE\" has the unknown value \"number\". Use a data type, a type or the name of a "
     "format that XMLMap files know; a format pattern of your own stands in braces."},
    {1441, none, none, none,
     "XDM1441: No columns are selected, so there is nothing to query. Select at least one node as a column."},
    {1442, "p", "urn:new", "urn:first",
     "XDM1442: The namespace prefix \"p\" stands for \"urn:new\" here and for \"urn:first\" elsewhere on the way to "
     "the selected columns. Give the two namespaces different prefixes, or select columns of only one of them."},
    {1443, "/doc", "other", none,
     "XDM1443: The path cannot be used: \"/doc\" is expected where \"other\" was found. A path begins with a slash and "
     "the root element's name, the same in every path, and none of its steps is empty."},
    {1444, "p:item", none, none,
     "XDM1444: The namespace prefix of \"p:item\" is not declared. Declare it in the XMLMap, or correct the prefix."},
    {1445, "x", none, none,
     "XDM1445: The path step \"x\" leads to no node of the model, and none could be made for it. Check the spelling of "
     "the path; if it is right, shorten it to 1,000 steps or give the program more memory."},
    {1446, "COLUMN", "datatype", none,
     "XDM1446: The XMLMap item \"COLUMN\" holds the unexpected element \"datatype\". Remove it, or correct its name; "
     "letter case counts."},
    {1447, none, none, none,
     "XDM1447: A string column of the XMLMap has no LENGTH. Add a LENGTH element with the longest length of its "
     "values."},
    {1448, "m.map", none, none,
     "XDM1448: The file \"m.map\" is not an XMLMap: its root element is not ROWMAPS. Check the path."},
    {1449, "m.map", "3.0", none,
     "XDM1449: The XMLMap file \"m.map\" has the version \"3.0\", which cannot be read. Use an XMLMap of version 1.9 "
     "or 2.1."},
    {1450, "m.map", "city", none,
     "XDM1450: The XMLMap file \"m.map\" has no table named \"city\". Check that this is the right file, and the name "
     "of the table; letter case counts."},
    {1452, "m.map", "city", none,
     "XDM1452: The XMLMap file \"m.map\" gives no columns for the table \"city\". Add at least one COLUMN to the "
     "table."},
};

TEST(Messages, EachNumberHasItsTextWithItsArgumentsQuoted) {
  for (const Case& each : cases) {
    EXPECT_EQ(message(each.number, each.first, each.second, each.third), each.text);
  }
}

TEST(Messages, TheTableAboveNamesTheWholeCatalogueInItsOrder) {
  ASSERT_EQ(kvb_message_count(), static_cast<int>(std::size(cases)));
  for (int i = 0; i < kvb_message_count(); ++i) EXPECT_EQ(kvb_message_number(i), cases[i].number);
}

TEST(Messages, NumbersAscend) {
  for (int i = 1; i < kvb_message_count(); ++i) EXPECT_LT(kvb_message_number(i - 1), kvb_message_number(i));
}

TEST(Messages, ThereIsNoNumberOutOfRange) {
  EXPECT_EQ(kvb_message_number(-1), 0);
  EXPECT_EQ(kvb_message_number(kvb_message_count()), 0);
}

TEST(Messages, AMissingTableNameIsNotShown) {
  EXPECT_EQ(message(1450, "m.map"),
            "XDM1450: The XMLMap file \"m.map\" has no table. "
            "Check that this is the right file, and the name of the table; letter case counts.");
}

TEST(Messages, ExpectedAndFoundFitEveryUse) {
  struct {
    const char* expected;
    const char* found;
    const char* start;
  } uses[] = {
      {"/", "d", "XDM1443: The path cannot be used: \"/\" is expected where \"d\" was found."},
      {"/", "", "XDM1443: The path cannot be used: \"/\" is expected where \"\" was found."},
      {"root", "<empty>", "XDM1443: The path cannot be used: \"root\" is expected where \"<empty>\" was found."},
      {"step", "<empty>", "XDM1443: The path cannot be used: \"step\" is expected where \"<empty>\" was found."}};
  for (const auto& use : uses) EXPECT_EQ(message(1443, use.expected, use.found).find(use.start), 0u) << use.found;
}

TEST(Messages, AnUnknownNumberShowsItselfAndItsArguments) {
  EXPECT_EQ(message(9999), "XDM9999: There is no text for this message number. Report it to the supplier.");
  EXPECT_EQ(message(1, "a", "", "c"),
            "XDM1: There is no text for this message number. Report it to the supplier. (\"a\", \"\", \"c\")");
}

TEST(Messages, ArgumentsBeyondThoseOfTheTextAreShownToo) {
  EXPECT_EQ(
      message(1427, "xdm", "more"),
      "XDM1427: There is more than one element inside \"xdm\". Leave only one of them in the XDM document. (\"more\")");
}

TEST(Messages, ArgumentsAreTakenAsTheyAre) {
  EXPECT_EQ(message(1448, "%1 [%2] %s \n\""),
            "XDM1448: The file \"%1 [%2] %s \n\"\" is not an XMLMap: its root element is not ROWMAPS. Check the path.");
}

TEST(Messages, ExhaustedMemoryGivesNull) {
  std::string longArgument(10000, 'x');
  long points = sweepAllocationFaults([&](long nth, AllocationFaults::Extent extent) {
    AllocationFaults faults(nth, extent);
    KvbString text = kvb_get_message("unit", 1, "XML Data Model", 472, longArgument.c_str(), "reason",
                                     static_cast<const char*>(nullptr));
    EXPECT_EQ(text.isNull(), faults.met());
    return faults.met();
  });
  EXPECT_GE(points, 3);
}

TEST(Messages, EveryNumberHasAnEntryInTheManual) {
  std::set<std::string> entries;
  std::ifstream manual(KVXDM_SOURCE_DIR "/docs/messages.md");
  for (std::string line; std::getline(manual, line);) {
    if (line.starts_with("### XDM")) entries.insert(line.substr(7));
  }
  std::set<std::string> numbers;
  for (int i = 0; i < kvb_message_count(); ++i) numbers.insert(std::to_string(kvb_message_number(i)));
  EXPECT_EQ(entries, numbers);
}

}  // namespace

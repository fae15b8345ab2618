// The message catalogue: one table, and the rendering of its texts with their arguments.
// Tested by tests/unit/kvbmessage_test.cpp; docs/messages.md explains every number.
#include <kvxbase/kvbmessage.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace {

/** "%1" stands for the first argument, quoted; what stands in brackets is left out without the argument in it. */
struct Message {
  int number;
  std::string_view text;
};

// In ascending order of the numbers.
constexpr Message catalogue[] = {
    {29, "Memory ran out while making %1. Give the program more memory or use a smaller model, then try again."},
    {267,
     "The column name %1 cannot be used: it is empty or another column has it already. Select the node with another "
     "name."},
    {463,
     "The file %1 could not be written. Check that its folder exists, that you may write there and that the disk has "
     "room."},
    {472,
     "The XMLMap file %1 could not be read: %2. Check the path, or correct the file where the reason says it is "
     "wrong."},
    {1414,
     "The XMLMap item %1 has the value %2, which is not allowed there. A syntax is XPath or XPathENR, a table path "
     "leads to an element, a LENGTH is a whole number and a DEFAULT is one of the column's valid values."},
    {1415,
     "The XMLMap item %1 is missing or empty. Fill it in: a TABLE-PATH needs a path, a heading attribute a name and a "
     "column a TYPE or DATATYPE."},
    {1420,
     "The XMLMap's namespace numbers do not fit together. Number the NS elements 1, 2, 3 and so on in this order, and "
     "use only these numbers in the braces of a path."},
    {1422,
     "The model has a root element already, and is filled only once. Use a new model for each document or XMLMap."},
    {1423, "The model is empty: it has no root element. Load an XDM document or import an XMLMap first."},
    {1424,
     "The XDM document's version %1 cannot be read. Set the attribute version of its root element to 1.0, or save the "
     "document again with this release."},
    {1425,
     "There is no valid root element. An XDM document needs the root element xdm with one element inside; to check an "
     "XPath, fill the model first."},
    {1426, "The first element inside %1 must be %2, but it is another one. Correct the XDM document."},
    {1427, "There is more than one element inside %1. Leave only one of them in the XDM document."},
    {1428, "The XDM document %1 could not be read. Check the path, your right to read the file and that it is XML."},
    {1429, "The text could not be read as an XDM document. Check that it is complete, well-formed XML in UTF-8."},
    {1430, "The XDM document could not be written as text. Give the program more memory, then try again."},
    {1431, "A document with the root element %1 could not be started. Give the program more memory, then try again."},
    {1432,
     "The item %1 could not be written into the XDM document. Check that its value holds only characters that XML "
     "allows, in UTF-8, and that there is enough memory."},
    {1433, "The column %1 could not be added to the selected columns. Give the program more memory, then try again."},
    {1434, "The item %1 could not be added to its list: %2. Give the program more memory, then try again."},
    {1435,
     "The %1 named %2 could not be written into the XDM document. Check that its name holds only characters that XML "
     "allows, in UTF-8, and that there is enough memory."},
    {1437,
     "The namespace URI of the %1 named %2 could not be written into the XDM document. Check that it holds only "
     "characters that XML allows, in UTF-8, and that there is enough memory."},
    {1438,
     "The namespace part of the item %1 could not be written into the XDM document: %2. Check that its prefix and URI "
     "hold only characters that XML allows, in UTF-8, and that there is enough memory."},
    {1439, "The XDM document has no attribute %1, or an empty one, on the element %2. Fill the attribute in."},
    {1440,
     "The XMLMap item %1 has the unknown value %2. Use a data type, a type or the name of a format that XMLMap files "
     "know; a format pattern of your own stands in braces."},
    {1441, "No columns are selected, so there is nothing to query. Select at least one node as a column."},
    {1442,
     "The namespace prefix %1 stands for %2 here and for %3 elsewhere on the way to the selected columns. Give the two "
     "namespaces different prefixes, or select columns of only one of them."},
    {1443,
     "The path cannot be used: %1 is expected where %2 was found. A path begins with a slash and the root element's "
     "name, the same in every path, and none of its steps is empty."},
    {1444, "The namespace prefix of %1 is not declared. Declare it in the XMLMap, or correct the prefix."},
    {1445,
     "The path step %1 leads to no node of the model, and none could be made for it. Check the spelling of the path; "
     "if it is right, shorten it to 1,000 steps or give the program more memory."},
    {1446, "The XMLMap item %1 holds the unexpected element %2. Remove it, or correct its name; letter case counts."},
    {1447, "A string column of the XMLMap has no LENGTH. Add a LENGTH element with the longest length of its values."},
    {1448, "The file %1 is not an XMLMap: its root element is not ROWMAPS. Check the path."},
    {1449, "The XMLMap file %1 has the version %2, which cannot be read. Use an XMLMap of version 1.9 or 2.1."},
    {1450,
     "The XMLMap file %1 has no table[ named %2]. Check that this is the right file, and the name of the table; letter "
     "case counts."},
    {1452, "The XMLMap file %1 gives no columns for the table %2. Add at least one COLUMN to the table."},
};

constexpr std::string_view unknownMessage = "There is no text for this message number. Report it to the supplier.";

/** The arguments of a message: texts closed by a null pointer. */
class Arguments {
 public:
  explicit Arguments(va_list list) noexcept { va_copy(list_, list); }
  ~Arguments() { va_end(list_); }
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;

  /** The argument at `index`, counted from 1; null when there are fewer. */
  const char* at(int index) noexcept;

 private:
  va_list list_;
};

const char* Arguments::at(int index) noexcept {
  va_list rest;
  va_copy(rest, list_);
  const char* argument = va_arg(rest, const char*);
  for (int i = 1; argument && i < index; ++i) argument = va_arg(rest, const char*);
  va_end(rest);
  return argument;
}

/** Puts one text together; the arguments that it does not name follow at the end, in parentheses. */
class Rendering {
 public:
  explicit Rendering(Arguments* arguments) noexcept : arguments_(arguments) {}

  KvbString render(int number, std::string_view text) noexcept;

 private:
  void appendText(std::string_view text) noexcept;
  void appendFilledIn(std::string_view text) noexcept;
  void appendOptional(std::string_view text) noexcept;
  void appendArgument(int index) noexcept;
  void appendUnnamed() noexcept;
  bool has(int index) noexcept { return arguments_->at(index) != nullptr; }

  Arguments* arguments_;
  int highestNamed_ = 0;
  KvbString out_;
  bool failed_ = false;
};

KvbString Rendering::render(int number, std::string_view text) noexcept {
  out_ = kvbStringFormat("XDM%d: ", number);
  failed_ = out_.isNull();
  appendFilledIn(text);
  appendUnnamed();
  return failed_ ? KvbString() : out_;
}

void Rendering::appendText(std::string_view text) noexcept {
  out_.append(text.data(), static_cast<unsigned>(text.size()), &failed_);
}

void Rendering::appendFilledIn(std::string_view text) noexcept {
  while (!text.empty()) {
    std::size_t plain = std::min(text.find_first_of("%["), text.size());
    appendText(text.substr(0, plain));
    text.remove_prefix(plain);
    if (text.starts_with('%')) {
      appendArgument(text[1] - '0');
      text.remove_prefix(2);
    } else if (text.starts_with('[')) {
      std::size_t end = text.find(']');
      appendOptional(text.substr(1, end - 1));
      text.remove_prefix(end + 1);
    }
  }
}

void Rendering::appendOptional(std::string_view text) noexcept {
  int index = text[text.find('%') + 1] - '0';
  if (has(index)) appendFilledIn(text);
}

void Rendering::appendArgument(int index) noexcept {
  highestNamed_ = std::max(highestNamed_, index);
  if (!has(index)) return;
  appendText("\"");
  out_.append(arguments_->at(index), &failed_);
  appendText("\"");
}

void Rendering::appendUnnamed() noexcept {
  int first = highestNamed_ + 1;
  if (!has(first)) return;
  for (int index = first; has(index); ++index) {
    appendText(index == first ? " (" : ", ");
    appendArgument(index);
  }
  appendText(")");
}

std::string_view textOf(int number) noexcept {
  const Message* found = std::ranges::lower_bound(catalogue, number, {}, &Message::number);
  return found != std::end(catalogue) && found->number == number ? found->text : unknownMessage;
}

}  // namespace

KvbString kvb_get_message_list(const char*, int, const char*, int number, va_list list) noexcept {
  Arguments arguments(list);
  return Rendering(&arguments).render(number, textOf(number));
}

KvbString kvb_get_message(const char* sourceUnit, int line, const char* component, int number, ...) noexcept {
  va_list arguments;
  va_start(arguments, number);
  KvbString text = kvb_get_message_list(sourceUnit, line, component, number, arguments);
  va_end(arguments);
  return text;
}

int kvb_message_count() noexcept { return static_cast<int>(std::size(catalogue)); }

int kvb_message_number(int index) noexcept {
  return index >= 0 && index < kvb_message_count() ? catalogue[index].number : 0;
}

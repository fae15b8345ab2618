// The typing of an XMLMap's columns: type, length, format, informat, default and valid values.
// Tested by tests/unit/kvxdmmap_typing_test.cpp.
#include "kvxdmmap_typing.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <string_view>

#include "kvxdmmain.h"
#include "kvxdmmap_dom.h"
#include "kvxdmtext.h"

namespace xmlmap {
namespace {

constexpr int noLength = -1;

constexpr kvbType untyped = 0;
constexpr kvbType integer = 2;
constexpr kvbType floatingPoint = 3;
constexpr kvbType characterString = 4;
constexpr kvbType dateAndTime = 5;

struct DataType {
  const char* name;
  kvbType type;
  const char* pattern;  // format and informat where the column gives none
};

constexpr DataType dataTypes[] = {
    {"date", dateAndTime, "yyyy-MM-dd"},
    {"datetime", dateAndTime, "yyyy-MM-dd'T'HH:mm:ss"},
    {"time", dateAndTime, "HH:mm:ss"},
    {"double", floatingPoint, ""},
    {"integer", integer, ""},
    {"string", characterString, ""},
};

struct Informat {
  const char* name;
  const char* pattern;
};

// The 12-hour "hh" of DATETIME, which has no AM/PM marker, is meant.
constexpr Informat informats[] = {
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
};

/** The row of `table` with that name, in any case; null without one. */
template <class Row, std::size_t count>
const Row* findByName(const Row (&table)[count], const KvbString& name) {
  const Row* row = std::find_if(table, table + count, [&](const Row& each) { return isKeyword(name, each.name); });
  return row == std::end(table) ? nullptr : row;
}

void setIfEmpty(KvbString* target, const char* text) {
  if (isEmpty(*target)) target->assign(text);
}

}  // namespace

bool ColumnTyping::read(const KvDomNode& child) {
  struct Reader {
    std::string_view name;
    bool (ColumnTyping::*read)(const KvDomNode&);
  };
  static constexpr Reader readers[] = {
      {"DATATYPE", &ColumnTyping::readDataType}, {"DEFAULT", &ColumnTyping::readDefault},
      {"ENUM", &ColumnTyping::readEnumeration},  {"FORMAT", &ColumnTyping::readFormat},
      {"INFORMAT", &ColumnTyping::readInformat}, {"LENGTH", &ColumnTyping::readLength},
      {"TYPE", &ColumnTyping::readType},
  };
  const KvbString name = child.getName();
  for (const Reader& reader : readers) {
    if (view(name) == reader.name) return (this->*reader.read)(child);
  }
  return fail(main_, __LINE__, 1446, "COLUMN", name);
}

bool ColumnTyping::readDataType(const KvDomNode& node) {
  const KvbString name = trimmedText(node);
  const DataType* dataType = findByName(dataTypes, name);
  if (!dataType) return fail(main_, __LINE__, 1440, "DATATYPE", name);
  type_ = dataType->type;
  setIfEmpty(&format_, dataType->pattern);
  setIfEmpty(&informat_, dataType->pattern);
  return true;
}

// A default of blanks only is kept as it is.
bool ColumnTyping::readDefault(const KvDomNode& node) {
  default_ = trimmedText(node);
  if (isEmpty(default_)) default_ = node.getValue(false);
  return true;
}

bool ColumnTyping::readEnumeration(const KvDomNode& node) {
  std::size_t count = 0;
  for ([[maybe_unused]] const KvDomNode& value : ChildrenNamed(node, "VALUE")) ++count;
  if (count == 0) return true;
  validValueCount_ = 0;
  validValues_.reset();
  validValues_.reset(new (std::nothrow) KvbString[count]);
  if (!validValues_) return fail(main_, __LINE__, 29, "(enumeration)");
  for (const KvDomNode& value : ChildrenNamed(node, "VALUE")) {
    validValues_[validValueCount_++] = value.getValue(false);
  }
  return true;
}

bool ColumnTyping::readFormat(const KvDomNode& node) { return readPattern(node, &format_); }

bool ColumnTyping::readInformat(const KvDomNode& node) { return readPattern(node, &informat_); }

// A pattern in braces loses its first and its last character, whatever the last one is.
bool ColumnTyping::readPattern(const KvDomNode& node, KvbString* target) {
  const KvbString text = trimmedText(node);
  if (isEmpty(text)) return true;
  if (text.length() >= 2 && view(text).front() == '{') {
    *target = text.mid(1, text.length() - 2);
    return true;
  }
  const Informat* informat = findByName(informats, text);
  if (!informat) return fail(main_, __LINE__, 1440, node.getName(), text);
  target->assign(informat->pattern);
  return true;
}

bool ColumnTyping::readLength(const KvDomNode& node) {
  const KvbString text = node.getValue(false);
  bool failed = false;
  const int length = text.asInt(&failed);
  if (failed) return fail(main_, __LINE__, 1414, "LENGTH", text);
  maximumLength_ = length;
  return true;
}

// A "DATATYPE" wins over the "TYPE", wherever it stands.
bool ColumnTyping::readType(const KvDomNode& node) {
  const KvbString name = trimmedText(node);
  const bool isCharacter = isKeyword(name, "character");
  if (!isCharacter && !isKeyword(name, "numeric")) return fail(main_, __LINE__, 1440, "TYPE", name);
  if (type_ == untyped) type_ = isCharacter ? characterString : floatingPoint;
  return true;
}

bool ColumnTyping::check() const {
  if (type_ == untyped) return fail(main_, __LINE__, 1415, "TYPE");
  if (type_ == characterString && maximumLength_ == noLength) return fail(main_, __LINE__, 1447);
  const bool defaultFits = isEmpty(default_) || validValueCount_ == 0 || isValidValue(default_);
  return defaultFits || fail(main_, __LINE__, 1414, "DEFAULT", default_);
}

std::span<const KvbString> ColumnTyping::validValues() const { return {validValues_.get(), validValueCount_}; }

bool ColumnTyping::isValidValue(const KvbString& value) const {
  return std::ranges::any_of(validValues(), [&](const KvbString& each) { return each.compare(value, true) == 0; });
}

bool ColumnTyping::apply(XDMColumn* column, const KvbString& xpath) const {
  KvbString error;
  if (applyTo(column, xpath, &error)) return true;
  main_->setErrorMessage(error);
  return false;
}

bool ColumnTyping::applyTo(XDMColumn* column, const KvbString& xpath, KvbString* error) const {
  if (!column->setXPath(xpath, error)) return false;
  column->setType(type_);
  if (maximumLength_ > 0) column->setMaximumLength(maximumLength_);
  if (!isEmpty(format_)) column->setFormat(format_);
  if (!isEmpty(informat_)) column->setInformat(informat_);
  if (!isEmpty(default_) && !column->setDefault(default_, error)) return false;
  return std::ranges::all_of(validValues(), [&](const KvbString& each) { return column->addValidValue(each, error); });
}

}  // namespace xmlmap

#include "rows_input.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

#include "csv.h"
#include "diagnostics.h"
#include "files.h"
#include "rows_reader.h"
#include "text.h"

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// The URI in `line`; what it escapes, it escapes as XML does.
std::string uriOf(std::string_view line) {
  std::size_t begin = line.find('"') + 1;
  std::string uri;
  for (char c : line.substr(begin, line.rfind('"') - begin)) uri += c == '<' ? "&lt;" : std::string(1, c);
  return uri;
}

/** The namespace declarations of a query's prolog as attributes of an element: its names are those of the rows. */
std::string namespaceAttributes(std::string_view query) {
  constexpr std::string_view declaresDefault = "declare default element namespace \"";
  constexpr std::string_view declaresPrefix = "declare namespace ";
  std::string attributes;
  while (!query.empty() && !query.starts_with("declare function")) {
    std::string_view line = query.substr(0, query.find('\n'));
    query.remove_prefix(std::min(query.size(), line.size() + 1));
    if (line.starts_with(declaresDefault)) attributes += " xmlns=\"" + uriOf(line) + "\"";
    if (line.starts_with(declaresPrefix)) {
      std::string_view rest = line.substr(declaresPrefix.size());
      attributes += " xmlns:" + std::string(rest.substr(0, rest.find(' '))) + "=\"" + uriOf(line) + "\"";
    }
  }
  return attributes;
}

class TableWriter {
 public:
  TableWriter(const RowsTarget& target, std::FILE* to) : to_(to) {
    writeTo(to_, "<table" + namespaceAttributes(target.query) + ">");
  }
  void beginRow() {
    ++rows_;
    writeTo(to_, "<row>");
  }
  void value(const std::string& column, const std::string& value) {
    writeTo(to_, "<" + column + ">" + escapeXml(value) + "</" + column + ">");
  }
  void endRow() { writeTo(to_, "</row>\n"); }
  void finish() { writeTo(to_, "</table>"); }
  /** The number of rows that have begun. */
  unsigned long rows() const { return rows_; }

 private:
  std::FILE* to_;
  unsigned long rows_ = 0;
};

std::string inQuotes(const std::string& text) { return "'" + text + "'"; }

std::string listed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + inQuotes(name);
  return list;
}

std::string codePoint(char32_t code) {
  char text[16];
  std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(code));
  return text;
}

/** Holds the header of a CSV file against the columns, then copies row by row. */
class CsvRows : public CsvSink {
 public:
  CsvRows(std::string name, const RowsTarget& target, TableWriter& writer)
      : name_(std::move(name)), target_(target), writer_(writer) {}

  void onRecord(const std::vector<std::string>& fields, unsigned long line) override {
    if (header_.empty()) {
      checkHeader(fields);
      header_ = fields;
    } else {
      copyRow(fields, line);
    }
  }

  void finish() const {
    if (header_.empty()) throw Failure(inQuotes(name_) + " has no header line with the names of the columns");
  }

 private:
  void checkHeader(const std::vector<std::string>& names) const {
    for (const std::string& column : target_.columns) {
      auto count = std::count(names.begin(), names.end(), column);
      if (count == 0) refuse(names, " has no column " + inQuotes(column) + ", which the model has");
      if (count > 1) refuse(names, " has the column " + inQuotes(column) + " more than once");
    }
    for (const std::string& name : names) {
      if (std::find(target_.columns.begin(), target_.columns.end(), name) == target_.columns.end()) {
        refuse(names, " has the column " + inQuotes(name) + ", which the model has not");
      }
    }
  }

  [[noreturn]] void refuse(const std::vector<std::string>& names, const std::string& why) const {
    throw Failure(inQuotes(name_) + why,
                  "its columns are: " + listed(names) + "\nthose of the model are: " + listed(target_.columns));
  }

  void copyRow(const std::vector<std::string>& fields, unsigned long line) {
    if (fields.size() != header_.size()) {
      throw Failure(inQuotes(name_) + " line " + std::to_string(line) + ": the row has " +
                    std::to_string(fields.size()) + " fields instead of " + std::to_string(header_.size()));
    }
    writer_.beginRow();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      checkCharacters(fields[i], header_[i], line);
      writer_.value(header_[i], fields[i]);
    }
    writer_.endRow();
  }

  void checkCharacters(const std::string& value, const std::string& column, unsigned long line) const {
    std::optional<char32_t> forbidden = findForbidden(value);
    if (!forbidden) return;
    throw Failure(inQuotes(name_) + " line " + std::to_string(line) + ": row " + std::to_string(writer_.rows()) +
                  ", column " + inQuotes(column) + " holds the character " + codePoint(*forbidden) +
                  ", which XML forbids");
  }

  std::string name_;
  const RowsTarget& target_;
  TableWriter& writer_;
  std::vector<std::string> header_;
};

/** Copies rows in XML as they are, into the namespace in which the query looks for them. */
class XmlRows : public XmlRowSink {
 public:
  XmlRows(const RowsTarget& target, TableWriter& writer) : target_(target), writer_(writer) {}

  void onRow(const XmlRow& row) override {
    writer_.beginRow();
    for (const auto& [name, value] : row) writer_.value(columnNamed(name), value);
    writer_.endRow();
  }

 private:
  const std::string& columnNamed(const std::string& local) const {
    auto found = std::find_if(target_.columns.begin(), target_.columns.end(),
                              [&](const std::string& column) { return localName(column) == local; });
    if (found != target_.columns.end()) return *found;
    throw Failure("row " + std::to_string(writer_.rows()) + " has the column " + inQuotes(local) +
                  ", which the model has not");
  }

  const RowsTarget& target_;
  TableWriter& writer_;
};

/** Whether the first character, blanks and a byte order mark apart, begins markup. */
bool isXml(std::FILE* file) {
  Buffer buffer;
  for (std::string_view piece; !(piece = readPiece(file, buffer)).empty();) {
    if (piece.starts_with(byteOrderMark)) piece.remove_prefix(byteOrderMark.size());
    for (char c : piece) {
      if (!std::isspace(static_cast<unsigned char>(c))) return c == '<';
    }
  }
  return false;
}

}  // namespace

unsigned long convertRows(std::FILE* file, const std::string& name, const RowsTarget& target, std::FILE* to) {
  bool isMarkup = isXml(file);
  readFrom(file, 0);
  TableWriter writer(target, to);
  if (isMarkup) {
    XmlRows rows(target, writer);
    try {
      readXmlRows(file, rows);
    } catch (const Failure& problem) {
      throw Failure(inQuotes(name) + " is no table of the model's rows: " + problem.what());
    }
  } else {
    CsvRows rows(name, target, writer);
    readCsv(file, name, rows);
    rows.finish();
  }
  writer.finish();
  readFrom(to, 0);
  return writer.rows();
}

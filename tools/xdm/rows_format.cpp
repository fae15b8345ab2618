#include "rows_format.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "csv.h"
#include "diagnostics.h"
#include "rows_reader.h"
#include "text.h"

namespace {

/** Knows the columns and holds every row against them. */
class CheckedPrinter : public RowsPrinter, private XmlRowSink {
 public:
  void finish() override {}
  unsigned long rows() const final { return rows_; }

 protected:
  explicit CheckedPrinter(std::vector<std::string> columns) : columns_(std::move(columns)) {
    for (const std::string& column : columns_) localNames_.emplace_back(localName(column));
  }

  const std::vector<std::string>& columns() const { return columns_; }
  TableExtent read(std::FILE* answer) { return readXmlRows(answer, *this); }
  virtual void print(const XmlRow& row) = 0;

 private:
  void onRow(const XmlRow& row) final {
    if (row.size() != columns_.size()) {
      throw Failure("a row with " + std::to_string(row.size()) + " columns instead of " +
                    std::to_string(columns_.size()));
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (row[i].first == localNames_[i]) continue;
      throw Failure("a row with the column '" + row[i].first + "' in the place of '" + columns_[i] + "'");
    }
    print(row);
    ++rows_;
  }

  std::vector<std::string> columns_;
  std::vector<std::string> localNames_;
  unsigned long rows_ = 0;
};

class CsvPrinter : public CheckedPrinter {
 public:
  CsvPrinter(std::vector<std::string> columns, Output& output) : CheckedPrinter(std::move(columns)), output_(output) {
    output_.write(csvLine(this->columns()));
  }

  void add(std::FILE* answer) override { read(answer); }

 private:
  void print(const XmlRow& row) override {
    for (const auto& [name, value] : row) line_.add(value);
    output_.write(line_.finish());
  }

  Output& output_;
  CsvLine line_;
};

std::string jsonText(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

bool isEscapedInJson(char c) { return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20; }

// Most values are plain, and stand as they are: the parser has made sure of UTF-8.
void appendJsonText(std::string& to, const std::string& value) {
  if (std::any_of(value.begin(), value.end(), isEscapedInJson)) {
    to += jsonText(value);
  } else {
    to.append(1, '"').append(value).append(1, '"');
  }
}

class JsonPrinter : public CheckedPrinter {
 public:
  JsonPrinter(std::vector<std::string> columns, Output& output) : CheckedPrinter(std::move(columns)), output_(output) {
    for (const std::string& column : this->columns()) keys_.push_back(jsonText(column) + ": ");
    output_.write("[");
  }

  void add(std::FILE* answer) override { read(answer); }
  void finish() override { output_.write(isFirst_ ? "]\n" : "\n]\n"); }

 private:
  void print(const XmlRow& row) override {
    object_ = isFirst_ ? "\n{" : ",\n{";
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i > 0) object_ += ", ";
      object_ += keys_[i];
      appendJsonText(object_, row[i].second);
    }
    object_ += '}';
    output_.write(object_);
    isFirst_ = false;
  }

  Output& output_;
  std::vector<std::string> keys_;
  std::string object_;
  bool isFirst_ = true;
};

/** The bytes of the first answer that can hold rows, with the rows of the others before its end. */
class XmlPrinter : public CheckedPrinter {
 public:
  XmlPrinter(std::vector<std::string> columns, Output& output) : CheckedPrinter(std::move(columns)), output_(output) {}

  void add(std::FILE* answer) override {
    copy_ = makeSpool();
    TableExtent extent = read(answer);
    readFrom(copy_.get(), 0);
    if (extent.isEmptyTag) {
      if (!isOpen_) end_ = readText(copy_.get(), UINTMAX_MAX);
      return;
    }
    if (!isOpen_) output_.copy(copy_.get(), extent.begin);
    readFrom(copy_.get(), extent.begin);
    output_.copy(copy_.get(), extent.end - extent.begin);
    if (!isOpen_) end_ = readText(copy_.get(), UINTMAX_MAX);
    isOpen_ = true;
  }
  void finish() override { output_.write(end_); }

 private:
  void onBytes(std::string_view bytes) override { writeTo(copy_.get(), bytes); }
  void print(const XmlRow&) override {}

  Output& output_;
  File copy_;  // of the answer at hand
  bool isOpen_ = false;
  std::string end_;  // what is still to be written
};

}  // namespace

std::unique_ptr<RowsPrinter> makeRowsPrinter(const std::string& format, std::vector<std::string> columns,
                                             Output& output) {
  if (format == "json") return std::make_unique<JsonPrinter>(std::move(columns), output);
  if (format == "xml") return std::make_unique<XmlPrinter>(std::move(columns), output);
  return std::make_unique<CsvPrinter>(std::move(columns), output);
}

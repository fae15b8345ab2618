#include "rows_format.h"

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

 protected:
  explicit CheckedPrinter(std::vector<std::string> columns) : columns_(std::move(columns)) {}

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
      if (row[i].first == localName(columns_[i])) continue;
      throw Failure("a row with the column '" + row[i].first + "' in the place of '" + columns_[i] + "'");
    }
    print(row);
  }

  std::vector<std::string> columns_;
};

class CsvPrinter : public CheckedPrinter {
 public:
  CsvPrinter(std::vector<std::string> columns, Output& output) : CheckedPrinter(std::move(columns)), output_(output) {
    output_.write(csvLine(this->columns()));
  }

  void add(std::FILE* answer) override { read(answer); }

 private:
  void print(const XmlRow& row) override {
    std::vector<std::string> values;
    for (const auto& [name, value] : row) values.push_back(value);
    output_.write(csvLine(values));
  }

  Output& output_;
};

std::string jsonText(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

class JsonPrinter : public CheckedPrinter {
 public:
  JsonPrinter(std::vector<std::string> columns, Output& output) : CheckedPrinter(std::move(columns)), output_(output) {
    output_.write("[");
  }

  void add(std::FILE* answer) override { read(answer); }
  void finish() override { output_.write(isFirst_ ? "]\n" : "\n]\n"); }

 private:
  void print(const XmlRow& row) override {
    std::string object;
    for (std::size_t i = 0; i < row.size(); ++i) {
      object += (i == 0 ? "" : ", ") + jsonText(columns()[i]) + ": " + jsonText(row[i].second);
    }
    output_.write((isFirst_ ? "\n{" : ",\n{") + object + "}");
    isFirst_ = false;
  }

  Output& output_;
  bool isFirst_ = true;
};

/** The bytes of the first answer that can hold rows, with the rows of the others before its end. */
class XmlPrinter : public CheckedPrinter {
 public:
  XmlPrinter(std::vector<std::string> columns, Output& output) : CheckedPrinter(std::move(columns)), output_(output) {}

  void add(std::FILE* answer) override {
    TableExtent extent = read(answer);
    readFrom(answer, 0);
    if (extent.isEmptyTag) {
      if (!isOpen_) end_ = readText(answer, UINTMAX_MAX);
      return;
    }
    if (!isOpen_) output_.copy(answer, extent.begin);
    readFrom(answer, extent.begin);
    output_.copy(answer, extent.end - extent.begin);
    if (!isOpen_) end_ = readText(answer, UINTMAX_MAX);
    isOpen_ = true;
  }
  void finish() override { output_.write(end_); }

 private:
  void print(const XmlRow&) override {}

  Output& output_;
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

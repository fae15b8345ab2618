// Reads the input as the rows that a user gives to the tool: as CSV, and as CSV or XML made ready for a query.
#include "csv.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "diagnostics.h"
#include "files.h"
#include "input.h"
#include "rows_input.h"
#include "rows_reader.h"

namespace {

using Record = std::vector<std::string>;
using Records = std::vector<Record>;

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

const RowsTarget target = {{"a", "b"}, "declare default element namespace \"urn:<rows>\";\n"};

class Collector : public CsvSink, public XmlRowSink {
 public:
  void onRecord(const Record& fields, unsigned long line) override {
    EXPECT_FALSE(fields.empty());
    EXPECT_GT(line, lastLine_);
    lastLine_ = line;
    records.push_back(fields);
  }
  void onRow(const XmlRow& row) override {
    records.emplace_back();
    for (const auto& [name, value] : row) records.back().push_back(value);
  }

  Records records;

 private:
  unsigned long lastLine_ = 0;
};

/** A file in memory that is read from its start. */
File fileOf(std::string_view text) {
  File file(fdopen(memfd_create("rows", MFD_CLOEXEC), "w+b"));
  writeTo(file.get(), text);
  readFrom(file.get(), 0);
  return file;
}

/** The records of `text`; none at all when it is refused. */
std::optional<Records> recordsOf(std::string_view text) {
  Collector collector;
  try {
    readCsv(fileOf(text).get(), "rows", collector);
  } catch (const Failure& refusal) {
    EXPECT_STRNE(refusal.what(), "");
    return std::nullopt;
  }
  return collector.records;
}

/** The rows of `text` once they are ready for the query; none at all when they are refused. */
std::optional<Records> convertedRowsOf(std::string_view text) {
  const File to = fileOf({});
  try {
    convertRows(fileOf(text).get(), "rows", target, to.get());
  } catch (const Failure& refusal) {
    EXPECT_STRNE(refusal.what(), "");
    return std::nullopt;
  }
  Collector collector;
  readXmlRows(to.get(), collector);
  return collector.records;
}

/** CSV of the records, with a byte order mark: a field at the start may begin with another one. */
std::string written(const Records& records) {
  std::string text(byteOrderMark);
  for (const Record& record : records) text += csvLine(record);
  return text;
}

bool beginsMarkup(std::string_view text) {
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  const std::size_t first = text.find_first_not_of(" \t\n\v\f\r");
  return first != std::string_view::npos && text[first] == '<';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = Input(data, size).rest();
  const std::optional<Records> records = recordsOf(text);
  if (records) {
    EXPECT_EQ(recordsOf(written(*records)), records);
  }
  const std::optional<Records> rows = convertedRowsOf(text);
  if (!rows || beginsMarkup(text)) return 0;
  // The first record is the header.
  EXPECT_TRUE(records);
  EXPECT_EQ(*rows, Records(records->begin() + 1, records->end()));
  return 0;
}

// Reads rows in their XML form, a `table` of `row`s, as a stream.
// Tested by tests/tool/xdm_rows_test.cpp.
#ifndef XDM_ROWS_READER_H
#define XDM_ROWS_READER_H

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/** A row: local names and values in their order. */
using XmlRow = std::vector<std::pair<std::string, std::string>>;

class XmlRowSink {
 public:
  virtual ~XmlRowSink() = default;
  virtual void onRow(const XmlRow& row) = 0;
  /** The bytes that are read next; the rows that end in them follow. */
  virtual void onBytes(std::string_view) {}
};

/** Where in a file the content of the `table` lies, in bytes from its start. */
struct TableExtent {
  std::uintmax_t begin;
  std::uintmax_t end;
  bool isEmptyTag;  // the table is one tag, which can hold nothing
};

/**
 * Reads `file` from its position and hands each row to `sink`. Names count without their namespace. Throws Failure with
 * a text that says what is wrong when it is no table of rows.
 */
TableExtent readXmlRows(std::FILE* file, XmlRowSink& sink);

#endif

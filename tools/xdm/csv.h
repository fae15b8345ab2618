// CSV as RFC 4180 has it: written with CRLF line ends, read as a stream.
// Tested by tests/tool/xdm_rows_test.cpp and tests/tool/xdm_document_test.cpp.
#ifndef XDM_CSV_H
#define XDM_CSV_H

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/** Puts fields together to a line, with quotes where they are needed; used for one line after the other. */
class CsvLine {
 public:
  void add(std::string_view field);
  /** Ends the line, which has a field. Its text is there until the next line gets one. */
  std::string_view finish();

 private:
  void addQuoted(std::string_view field);

  std::string text_;
  std::size_t fields_ = 0;
};

/** The line of `fields`. */
std::string csvLine(const std::vector<std::string>& fields);

/** Takes the lines of a CSV file. `line` is the number of the first line of the file on which the fields stand. */
class CsvSink {
 public:
  virtual ~CsvSink() = default;
  virtual void onRecord(const std::vector<std::string>& fields, unsigned long line) = 0;
};

/** Reads `file`, called `name` in messages, to the end. Throws Failure when it is not CSV in UTF-8. */
void readCsv(std::FILE* file, const std::string& name, CsvSink& sink);

#endif

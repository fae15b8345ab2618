// The forms in which `xdm rows` prints one table.
// Tested by tests/tool/xdm_rows_test.cpp.
#ifndef XDM_ROWS_FORMAT_H
#define XDM_ROWS_FORMAT_H

#include <memory>
#include <string>
#include <vector>

#include "output.h"

/** Prints what a processor answered, one answer after the other, as one table. */
class RowsPrinter {
 public:
  virtual ~RowsPrinter() = default;
  /** Adds the rows of `answer`, which is read once. Throws Failure when it is no table of the columns. */
  virtual void add(std::FILE* answer) = 0;
  virtual void finish() = 0;
  /** How many rows have been printed. */
  virtual unsigned long rows() const = 0;
};

/** `format` is "csv", "json" or "xml". */
std::unique_ptr<RowsPrinter> makeRowsPrinter(const std::string& format, std::vector<std::string> columns,
                                             Output& output);

#endif

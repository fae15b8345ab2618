// Rows that a user gives, as CSV or XML, made ready for the rows-to-XML query.
// Tested by tests/tool/xdm_document_test.cpp.
#ifndef XDM_ROWS_INPUT_H
#define XDM_ROWS_INPUT_H

#include <cstdio>
#include <string>
#include <vector>

/** What the rows must fit. */
struct RowsTarget {
  std::vector<std::string> columns;
  std::string query;  // its prolog says in which namespace it looks for the rows
};

/**
 * Writes the rows of `file`, called `name` in messages, to `to` in the form that the query reads. Returns their number.
 * Throws Failure.
 */
unsigned long convertRows(std::FILE* file, const std::string& name, const RowsTarget& target, std::FILE* to);

#endif

// Runs XQuery texts in the real processors and reads the rows that come back.
#ifndef KVXDM_TESTS_XQUERY_H
#define KVXDM_TESTS_XQUERY_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "process.h"

/** A row: column name and text, in order. */
using Row = std::vector<std::pair<std::string, std::string>>;
using Rows = std::vector<Row>;

enum class Processor { saxon, basex };
constexpr Processor processors[] = {Processor::saxon, Processor::basex};
const char* nameOf(Processor processor);

/** Runs `query` over the document in the file `input` (none when empty) with `variables` bound. */
ProcessResult runQueryOnFile(Processor processor, std::string_view query, const std::string& input,
                             const std::vector<std::pair<std::string, std::string>>& variables = {});

/** Runs `query` over the document `xml`. */
ProcessResult runQuery(Processor processor, std::string_view query, std::string_view xml,
                       const std::vector<std::pair<std::string, std::string>>& variables = {});

/** The rows of a `table` of `row`s, by local names. Throws std::runtime_error when `xml` is not one. */
Rows rowsOf(std::string_view xml);

/** The rows that `query` gives over `xml`. Throws std::runtime_error, with what the processor said, when it fails. */
Rows runRows(Processor processor, std::string_view query, std::string_view xml,
             const std::vector<std::pair<std::string, std::string>>& variables = {});

#endif

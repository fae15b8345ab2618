// `xdm query`.
// Tested by tests/tool/xdm_query_test.cpp.
#include "query.h"

#include "commands.h"
#include "diagnostics.h"
#include "model.h"
#include "text.h"

namespace {

std::string checked(const KvbString& query, const KvbString& error) {
  if (query.length() > 0) return toStd(query);
  if (error.length() > 0) throw Failure(toStd(error));
  throw Failure("the query could not be made; usually memory is exhausted");
}

}  // namespace

std::string toRowsQuery(XDMMain& main, const GeneratorOptions& options) {
  KvbString error;
  KvbString query = main.genXQueryToColumns(!options.streamingOption, options.sequence, !options.absoluteLets,
                                            options.keepWhitespace, &error);
  return checked(query, error);
}

std::string fromRowsQuery(XDMMain& main, const GeneratorOptions& options) {
  KvbString error;
  KvbString query = main.genXQueryFromColumns(!options.streamingOption, options.groupRows, &error);
  return checked(query, error);
}

void printToRowsQuery(const Options& options, Output& output) {
  output.write(toRowsQuery(*openModel(options.model), options.generator));
}

void printFromRowsQuery(const Options& options, Output& output) {
  output.write(fromRowsQuery(*openModel(options.model), options.generator));
}

// `xdm rows`.
// Tested by tests/tool/xdm_rows_test.cpp.
#include "commands.h"
#include "diagnostics.h"
#include "model.h"
#include "processor.h"
#include "progress.h"
#include "query.h"
#include "rows_format.h"
#include "sources.h"
#include "text.h"

namespace {

/** Adds the answer of `processor` about `document` to what is printed. */
OutputReader answerPrinter(RowsPrinter& printer, const std::string& processor, const std::string& document) {
  return [&printer, processor, document](std::FILE* answer) {
    try {
      printer.add(answer);
    } catch (const Failure& problem) {
      throw Failure("the XQuery processor " + processor + " gave no table of the rows of " + document, problem.what());
    }
  };
}

}  // namespace

void printRows(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  std::string query = toRowsQuery(*main, options.generator);
  TemporaryFolder folder;
  std::unique_ptr<Processor> processor = chooseProcessor(options.processor);
  std::unique_ptr<RowsPrinter> printer = makeRowsPrinter(options.format, columnNames(*main), output);
  if (options.model.collection) {
    std::string variable = toStd(main->getCollectionVariableName());
    tellProgress("running " + processor->name() + " on the collection");
    processor->runCollection(query, variable, openCollection(options.documents, folder),
                             answerPrinter(*printer, processor->name(), "the collection"));
  } else {
    std::vector<Source> documents;
    for (const std::string& name : options.documents) documents.push_back(openSource(name, folder));
    for (std::size_t i = 0; i < documents.size(); ++i) {
      const Source& document = documents[i];
      tellProgress("running " + processor->name() + " on " + document.name + " (" + std::to_string(i + 1) + " of " +
                   std::to_string(documents.size()) + ")");
      processor->run(query, document, answerPrinter(*printer, processor->name(), document.name));
    }
  }
  printer->finish();
}

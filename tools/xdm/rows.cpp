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

std::vector<Source> openDocuments(const Options& options, const TemporaryFolder& folder) {
  if (options.model.collection) return openCollection(options.documents, folder);
  std::vector<Source> documents;
  for (const std::string& name : options.documents) documents.push_back(openSource(name, folder));
  return documents;
}

/** A query, run over documents by a processor and printed. */
class Run {
 public:
  Run(XDMMain& main, std::string query, Processor& processor, RowsPrinter& printer)
      : main_(main), query_(std::move(query)), processor_(processor), printer_(printer) {}

  void overCollection(const std::vector<Source>& documents) {
    tellProgress("running " + processor_.name() + " on the collection");
    std::string variable = toStd(main_.getCollectionVariableName());
    processor_.runCollection(query_, variable, documents, answerPrinter("the collection"));
    if (printer_.rows() > 0) return;
    for (const Source& document : documents) warnOfOtherRoot(document);
  }

  void overEach(const std::vector<Source>& documents) {
    for (std::size_t i = 0; i < documents.size(); ++i) {
      const Source& document = documents[i];
      tellProgress("running " + processor_.name() + " on " + document.name + " (" + std::to_string(i + 1) + " of " +
                   std::to_string(documents.size()) + ")");
      unsigned long before = printer_.rows();
      processor_.run(query_, document, answerPrinter(document.name));
      if (printer_.rows() == before) warnOfOtherRoot(document);
    }
  }

 private:
  OutputReader answerPrinter(const std::string& document) {
    return processor_.answerReader("table of the rows of " + document,
                                   [this](std::FILE* answer) { printer_.add(answer); });
  }

  /** For a document without rows: in one of another vocabulary the query finds nothing, without a word. */
  void warnOfOtherRoot(const Source& document) const {
    std::string expected = toStd(main_.getRootNode()->getLocalName());
    std::string found(localName(document.prolog.rootName));
    if (found.empty() || found == expected || expected == "*") return;
    warn(document.name + ": no rows, since its root element is '" + found + "' and the model's is '" + expected + "'");
  }

  XDMMain& main_;
  std::string query_;
  Processor& processor_;
  RowsPrinter& printer_;
};

/** A processor names only the type error that several elements in the place of one are. */
Failure explained(const Failure& problem, bool isSequence) {
  if (isSequence || problem.details().find("XPTY0004") == std::string::npos) return problem;
  return Failure(problem.what(), problem.details() +
                                     "A column may have met several elements in one row: --sequence allows that, "
                                     "--column-xpath NAME=XPATH[1] takes the first, --row makes rows of them\n");
}

}  // namespace

void printRows(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  std::string query = toRowsQuery(*main, options.generator);
  TemporaryFolder folder;
  std::unique_ptr<Processor> processor = chooseProcessor(options.processor);
  std::unique_ptr<RowsPrinter> printer = makeRowsPrinter(options.format, columnNames(*main), output);
  std::vector<Source> documents = openDocuments(options, folder);
  Run run(*main, query, *processor, *printer);
  try {
    options.model.collection ? run.overCollection(documents) : run.overEach(documents);
  } catch (const Failure& problem) {
    throw explained(problem, options.generator.sequence);
  }
  printer->finish();
}

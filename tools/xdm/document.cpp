// `xdm document`.
// Tested by tests/tool/xdm_document_test.cpp.
#include "commands.h"
#include "model.h"
#include "processor.h"
#include "progress.h"
#include "query.h"
#include "rows_input.h"
#include "sources.h"

namespace {

/** The rows in the form that the query reads, as a document for a processor. */
Source readyRows(const std::string& name, const RowsTarget& target, const TemporaryFolder& folder) {
  std::string given = regularFile(name, folder);
  File ready = folder.create("rows.xml");
  convertRows(openForReading(given, name).get(), titleOf(name), target, ready.get());
  std::string path = folder.file("rows.xml");
  return {titleOf(name), path, std::filesystem::file_size(path), {}};
}

}  // namespace

void printDocument(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  std::string query = fromRowsQuery(*main, options.generator);
  TemporaryFolder folder;
  std::unique_ptr<Processor> processor = chooseProcessor(options.processor);
  Source rows = readyRows(options.documents.front(), {columnNames(*main), query}, folder);
  tellProgress("running " + processor->name() + " on " + rows.name);
  processor->run(query, rows, [&](std::FILE* answer) { output.copy(answer); });
}

// `xdm document`.
// Tested by tests/tool/xdm_document_test.cpp.
#include "commands.h"
#include "diagnostics.h"
#include "model.h"
#include "processor.h"
#include "progress.h"
#include "query.h"
#include "rows_input.h"
#include "sources.h"
#include "xml_reader.h"

namespace {

void warnOfUnusedRows(unsigned long rows, XDMMain& main, const std::string& name) {
  if (rows < 2 || !main.getRootNode()->getDecidesRow()) return;
  warn(name + ": only the first row is used, since the root element decides the row");
}

/** The rows in the form that the query reads, as a document for a processor. */
Source readyRows(const std::string& name, XDMMain& main, const std::string& query, const TemporaryFolder& folder) {
  std::string given = regularFile(name, folder);
  File ready = folder.create("rows.xml");
  unsigned long rows =
      convertRows(openForReading(given, name).get(), titleOf(name), {columnNames(main), query}, ready.get());
  warnOfUnusedRows(rows, main, titleOf(name));
  std::string path = folder.file("rows.xml");
  return {titleOf(name), path, std::filesystem::file_size(path), {}};
}

/** Copies a document; a processor's answer that is none is refused. */
class DocumentCopy : public XmlReader {
 public:
  explicit DocumentCopy(Output& output) : XmlReader(Kind::document), output_(output) {}

 private:
  void onBytes(std::string_view bytes) override { output_.write(bytes); }

  Output& output_;
};

void copyDocument(std::FILE* answer, Output& output) {
  DocumentCopy copy(output);
  if (!copy.read(answer)) throw Failure(copy.problem());
}

}  // namespace

void printDocument(const Options& options, Output& output) {
  XDMMainPtr main = openModel(options.model);
  std::string query = fromRowsQuery(*main, options.generator);
  TemporaryFolder folder;
  std::unique_ptr<Processor> processor = chooseProcessor(options.processor);
  Source rows = readyRows(options.documents.front(), *main, query, folder);
  tellProgress("running " + processor->name() + " on " + rows.name);
  processor->run(query, rows, processor->answerReader("document for the rows of " + rows.name, [&](std::FILE* answer) {
    copyDocument(answer, output);
  }));
}

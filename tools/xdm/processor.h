// The XQuery processors that run a query.
// Tested by tests/tool/xdm_rows_test.cpp.
#ifndef XDM_PROCESSOR_H
#define XDM_PROCESSOR_H

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "files.h"
#include "options.h"
#include "process.h"
#include "sources.h"

/** One processor, with a folder of its own for what it reads and leaves. */
class Processor {
 public:
  virtual ~Processor() = default;
  Processor(const Processor&) = delete;
  Processor& operator=(const Processor&) = delete;

  /** Runs `query` over one document; `read` gets the answer while it is written. Throws Failure when the processor
   * fails, maybe after it has answered, and what `read` throws. */
  void run(const std::string& query, const Source& document, const OutputReader& read);

  /** Runs `query` over all `documents` as the collection that `variable` names; likewise. */
  void runCollection(const std::string& query, const std::string& variable, const std::vector<Source>& documents,
                     const OutputReader& read);

  /** `read` for an answer that is to be `expected`, such as "table of the rows of x.xml"; its failures say so. */
  OutputReader answerReader(const std::string& expected, const OutputReader& read) const;

  const std::string& name() const { return name_; }

 protected:
  /** What a processor is started with. */
  struct Task {
    std::string query;     // the query's file
    std::string input;     // a document, or the value of the collection's variable
    std::string variable;  // empty without a collection
    std::uintmax_t bytes;  // the size of all that is read
    bool loadsDtd;
  };

  Processor(std::string name, const ProcessorOptions& options);

  const TemporaryFolder& folder() const { return folder_; }
  /** The folder with links to documents, named so that their order is that of the documents. */
  std::string linkFolder() const { return folder_.file("inputs"); }

  virtual std::vector<std::string> command(const Task& task) const = 0;
  virtual Environment environment() const { return {}; }
  /** Whether the processor reads a document, or one of a collection, at `path`, whatever it is called. */
  virtual bool reads(const std::string& path, bool inCollection) const = 0;
  /** Makes a collection of the documents at `paths`, in their order; gives the value for its variable. */
  virtual std::string collectionOf(const std::vector<std::string>& paths) const = 0;
  /** What is shown of the text that the processor left behind when it failed. */
  virtual std::string explanation(const std::string& error) const { return error; }
  /** Whether the tool rules what is loaded beside the document. */
  virtual bool isToldAboutDtd() const { return true; }

 private:
  struct Place {
    std::string path;
    bool isLinked;
  };

  Place place(const Source& document, bool inCollection);
  bool canLoadDtd(const Source& document, const Place& place) const;
  void warnOfDtd(const Source& document) const;
  void runTask(const Task& task, const std::string& documentName, const OutputReader& read) const;

  std::string name_;
  bool mayLoadDtd_;
  TemporaryFolder folder_;
  unsigned links_ = 0;
};

/** The processor that `options` choose, or the first one found. Throws Failure and WrongUsage. */
std::unique_ptr<Processor> chooseProcessor(const ProcessorOptions& options);

#endif

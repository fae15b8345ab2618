// Where a command prints: a file or standard output, whole or not at all.
// Tested by tests/tool/xdm_usage_test.cpp.
#ifndef XDM_OUTPUT_H
#define XDM_OUTPUT_H

#include <kvxbase/kvboutputfile.h>

#include <string>
#include <string_view>

#include "files.h"

/** Collects what a command prints; nothing is seen of it until finish. */
class Output {
 public:
  /** Prints to the file at `path`, to standard output when it is empty. Throws Failure when the file can't be written.
   */
  explicit Output(const std::string& path);

  void write(std::string_view bytes) { writeTo(spool_.get(), bytes); }
  /** Adds the bytes of `from`, from its position on and at most `limit`. */
  void copy(std::FILE* from, std::uintmax_t limit = UINTMAX_MAX) { copyBytes(from, spool_.get(), limit); }

  /** Prints all at once. Throws Failure. */
  void finish();

 private:
  void finishFile();
  void finishStandardOutput();

  std::string path_;
  File spool_;
  KvbOutputFile file_;
};

#endif

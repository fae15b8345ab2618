// Files that are written whole or not at all.
// Tested by tests/unit/kvboutputfile_test.cpp.
#ifndef KVXBASE_KVBOUTPUTFILE_H
#define KVXBASE_KVBOUTPUTFILE_H

#include <kvxbase/kvbstring.h>

/**
 * Writes one file. A regular file (or a path where nothing stands yet) is written to a temporary file beside it,
 * flushed to the disk and renamed over it by commit(), keeping the permissions of the file that it replaces; until then
 * the old file is as it was. A symbolic link is followed: the file that it names is the one replaced. A path that is
 * not a regular file (a device, a pipe) is written directly.
 *
 * Each operation returns false on failure, with the reason in getErrorMessage(); after a failure every further
 * operation fails too. An object destroyed without a successful commit() leaves no temporary file.
 *
 * One object is used by one thread at a time. Never throws.
 */
class KVXBASE_API KvbOutputFile {
 public:
  KvbOutputFile() noexcept;
  ~KvbOutputFile();
  KvbOutputFile(const KvbOutputFile&) = delete;
  KvbOutputFile& operator=(const KvbOutputFile&) = delete;

  /** Begins writing the file at `path`. REQUIRES: not opened before. */
  bool open(const KvbString& path) noexcept;

  /** Adds the `length` bytes at `bytes`; they are buffered. */
  bool write(const char* bytes, unsigned long length) noexcept;

  /** Writes out what is buffered and puts the finished file in its place. */
  bool commit() noexcept;

  /** The reason of the first failure; empty when there was none. */
  KvbString getErrorMessage() const noexcept;

 private:
  struct State;
  State* state_;
};

#endif

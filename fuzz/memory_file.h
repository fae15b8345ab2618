// A file in memory, for what is read from files only.
#ifndef KVXDM_FUZZ_MEMORY_FILE_H
#define KVXDM_FUZZ_MEMORY_FILE_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <string_view>

/** A file that has a path while the process lives. */
class MemoryFile {
 public:
  MemoryFile() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {}
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  /** Replaces what is in the file. */
  void write(std::string_view text) const {
    EXPECT_EQ(ftruncate(descriptor_, 0), 0);
    EXPECT_EQ(pwrite(descriptor_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }

 private:
  int descriptor_;
};

#endif

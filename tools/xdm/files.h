// Files as the tool uses them: spools without a name, and a folder that vanishes.
#ifndef XDM_FILES_H
#define XDM_FILES_H

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

using Buffer = std::array<char, 65536>;

/** Opens `path` for reading; `name` is what a Failure calls it. */
File openForReading(const std::string& path, const std::string& name);

/** A file for writing and reading again that has no name and vanishes when it is closed. */
File makeSpool();

void writeTo(std::FILE* file, std::string_view bytes);

/** Writes out what is buffered. */
void flush(std::FILE* file);

/** Does so and goes to `position`, from where the file is read. */
void readFrom(std::FILE* file, std::uintmax_t position);

/** The next bytes of `file`, at most `limit`, in `buffer`; empty at the end. */
std::string_view readPiece(std::FILE* file, Buffer& buffer, std::uintmax_t limit = UINTMAX_MAX);

/** The next bytes of `file`, at most `limit`. */
std::string readText(std::FILE* file, std::uintmax_t limit);

/** Copies the bytes from the position of `from` on, at most `limit`. */
void copyBytes(std::FILE* from, std::FILE* to, std::uintmax_t limit = UINTMAX_MAX);

/** A folder for files that other programs read; removed with all in it at the end. Its path is plain (isPlainPath). */
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string file(std::string_view name) const { return path_ / name; }
  /** The file `name`, new and open for writing. Throws Failure. */
  File create(std::string_view name) const;
  /** Writes `text` into the file `name` and returns its path. */
  std::string write(std::string_view name, std::string_view text) const;
  /** Writes what is left to read of `from` into a new file and returns its path. */
  std::string copy(std::FILE* from) const;

 private:
  std::filesystem::path path_;
};

/** Whether `path` holds only characters that no program takes for anything but themselves. */
bool isPlainPath(std::string_view path);

#endif

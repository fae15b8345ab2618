#include "files.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "diagnostics.h"

namespace {

Failure systemFailure(const std::string& what) { return Failure(what + ": " + std::strerror(errno)); }

std::string temporaryPlace() {
  const char* chosen = std::getenv("TMPDIR");
  return chosen && *chosen == '/' && isPlainPath(chosen) ? chosen : "/tmp";
}

/** The temporary file that a system call opened, or -1. */
File openDescriptor(int descriptor) {
  File file(descriptor < 0 ? nullptr : fdopen(descriptor, "w+b"));
  if (!file) throw systemFailure("cannot make a temporary file in '" + temporaryPlace() + "'");
  return file;
}

bool isPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || std::strchr("/._-", c);
}

}  // namespace

File openForReading(const std::string& path, const std::string& name) {
  File file(std::fopen(path.c_str(), "rbe"));
  if (!file) throw systemFailure("cannot read '" + name + "'");
  return file;
}

File makeSpool() {
  std::string name = temporaryPlace() + "/xdm-XXXXXX";
  File spool = openDescriptor(mkostemp(name.data(), O_CLOEXEC));
  unlink(name.c_str());
  return spool;
}

void writeTo(std::FILE* file, std::string_view bytes) {
  if (bytes.empty()) return;  // there may be no bytes to point at, which fwrite does not take
  if (std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size())
    throw systemFailure("cannot write a temporary file");
}

void flush(std::FILE* file) {
  if (std::fflush(file) != 0) throw systemFailure("cannot write a temporary file");
}

void readFrom(std::FILE* file, std::uintmax_t position) {
  flush(file);
  if (fseeko(file, static_cast<off_t>(position), SEEK_SET) != 0) throw systemFailure("cannot read a temporary file");
}

std::string_view readPiece(std::FILE* file, Buffer& buffer, std::uintmax_t limit) {
  std::size_t wanted = static_cast<std::size_t>(std::min<std::uintmax_t>(limit, buffer.size()));
  std::size_t length = std::fread(buffer.data(), 1, wanted, file);
  if (length < wanted && std::ferror(file)) throw systemFailure("cannot read a file");
  return {buffer.data(), length};
}

std::string readText(std::FILE* file, std::uintmax_t limit) {
  Buffer buffer;
  std::string text;
  while (true) {
    std::string_view piece = readPiece(file, buffer, limit - text.size());
    if (piece.empty()) return text;
    text += piece;
  }
}

void copyBytes(std::FILE* from, std::FILE* to, std::uintmax_t limit) {
  Buffer buffer;
  while (true) {
    std::string_view piece = readPiece(from, buffer, limit);
    if (piece.empty()) return;
    writeTo(to, piece);
    limit -= piece.size();
  }
}

TemporaryFolder::TemporaryFolder() {
  std::string name = temporaryPlace() + "/xdm-XXXXXX";
  if (!mkdtemp(name.data())) throw systemFailure("cannot make a temporary folder in '" + temporaryPlace() + "'");
  path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;  // nothing is lost when a temporary file stays behind
  std::filesystem::remove_all(path_, ignored);
}

File TemporaryFolder::create(std::string_view name) const {
  File created(std::fopen(file(name).c_str(), "wbe"));
  if (!created) throw systemFailure("cannot make a temporary file");
  return created;
}

std::string TemporaryFolder::write(std::string_view name, std::string_view text) const {
  File to = create(name);
  writeTo(to.get(), text);
  flush(to.get());
  return file(name);
}

std::string TemporaryFolder::copy(std::FILE* from) const {
  std::string path = file("copy-XXXXXX.xml");
  constexpr int endingLength = 4;
  File to = openDescriptor(mkostemps(path.data(), endingLength, O_CLOEXEC));
  copyBytes(from, to.get());
  flush(to.get());
  return path;
}

bool isPlainPath(std::string_view path) { return std::all_of(path.begin(), path.end(), isPlain); }

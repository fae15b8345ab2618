#include "output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "diagnostics.h"
#include "text.h"

namespace {

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) return false;
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

Output::Output(const std::string& path) : path_(path), spool_(makeSpool()) {
  if (!path_.empty() && !file_.open(toKvb(path_))) throw Failure(toStd(file_.getErrorMessage()));
}

void Output::finish() {
  readFrom(spool_.get(), 0);
  if (path_.empty()) {
    finishStandardOutput();
  } else {
    finishFile();
  }
}

void Output::finishFile() {
  Buffer buffer;
  for (std::string_view piece; !(piece = readPiece(spool_.get(), buffer)).empty();) {
    if (!file_.write(piece.data(), piece.size())) throw Failure(toStd(file_.getErrorMessage()));
  }
  if (!file_.commit()) throw Failure(toStd(file_.getErrorMessage()));
}

void Output::finishStandardOutput() {
  Buffer buffer;
  for (std::string_view piece; !(piece = readPiece(spool_.get(), buffer)).empty();) {
    if (!writeAll(STDOUT_FILENO, piece))
      throw Failure(std::string("cannot write standard output: ") + std::strerror(errno));
  }
}

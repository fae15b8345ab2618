// Files that are written whole or not at all: a temporary file beside the target, renamed over it at the end.
// Tested by tests/unit/kvboutputfile_test.cpp.
#include <kvxbase/kvboutputfile.h>

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include <kvxbase/kvbuuid.h>

namespace {

namespace fs = std::filesystem;

/** Holds off the signal that a pipe without a reader raises, so that writing there is a failure and no end. */
class BrokenPipeSignal {
 public:
  BrokenPipeSignal() noexcept {
    ::sigemptyset(&signal_);
    ::sigaddset(&signal_, SIGPIPE);
    sigset_t pending;
    ::sigpending(&pending);
    wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &signal_, &before_);
  }
  ~BrokenPipeSignal() {
    constexpr timespec atOnce = {};
    if (!wasPending_) ::sigtimedwait(&signal_, nullptr, &atOnce);
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  BrokenPipeSignal(const BrokenPipeSignal&) = delete;
  BrokenPipeSignal& operator=(const BrokenPipeSignal&) = delete;

 private:
  sigset_t signal_;
  sigset_t before_;
  bool wasPending_;
};

/** The system calls of a file being written; each is repeated when a signal interrupts it, and sets errno. */
namespace calls {

int open(const std::string& path, int flags, mode_t mode) noexcept {
  int descriptor;
  do {
    descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | flags, mode);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

bool write(int descriptor, const char* bytes, std::size_t length) noexcept {
  while (length > 0) {
    ssize_t written = ::write(descriptor, bytes, length);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    bytes += written;
    length -= static_cast<std::size_t>(written);
  }
  return true;
}

/** Takes the permissions, and the owner where this process may give a file away. */
bool takePermissions(int descriptor, const struct stat& from) noexcept {
  [[maybe_unused]] int ownerTaken = ::fchown(descriptor, from.st_uid, from.st_gid);
  return ::fchmod(descriptor, from.st_mode & 07777) == 0;
}

}  // namespace calls

/** The path that `path` names once symbolic links at its end are followed, also when nothing stands there yet. */
fs::path followed(const fs::path& path, std::error_code* error) {
  constexpr int mostLinks = 40;
  fs::path target = fs::absolute(path, *error);
  for (int links = 0; links < mostLinks; ++links) {
    std::error_code isNoLink;
    fs::path next = fs::read_symlink(target, isNoLink);
    if (isNoLink) return target;
    target = target.parent_path() / next;
  }
  *error = std::make_error_code(std::errc::too_many_symbolic_link_levels);
  return target;
}

}  // namespace

struct __attribute__((visibility("hidden"))) KvbOutputFile::State {
  std::string path;       // as given, for the error message
  std::string target;     // the file to be replaced
  std::string temporary;  // empty while there is none
  struct stat replaced = {};
  bool replaces = false;
  bool failed = false;
  int descriptor = -1;
  std::size_t buffered = 0;
  KvbString error;
  char buffer[64 * 1024];

  ~State() { discard(); }

  bool open(const KvbString& name);
  bool openDirectly();
  bool openBeside();
  bool write(const char* bytes, std::size_t length) noexcept;
  bool flush() noexcept;
  bool finish() noexcept;
  bool closeDescriptor() noexcept;
  void discard() noexcept;
  bool put(const char* bytes, std::size_t length) noexcept;
  bool check(bool succeeded, const char* action) noexcept;
  bool fail(const char* action, int code) noexcept;
};

bool KvbOutputFile::State::open(const KvbString& name) {
  path = name.asCstr();
  replaces = ::stat(path.c_str(), &replaced) == 0;
  return replaces && !S_ISREG(replaced.st_mode) ? openDirectly() : openBeside();
}

bool KvbOutputFile::State::openDirectly() {
  descriptor = calls::open(path, 0, 0);
  return check(descriptor >= 0, "open");
}

bool KvbOutputFile::State::openBeside() {
  std::error_code fault;
  fs::path file = followed(path, &fault);
  if (!fault && !file.has_filename()) fault = std::make_error_code(std::errc::is_a_directory);
  if (fault) return fail("open", fault.value());
  // Renaming needs no right to the old file itself; a file that may not be written is not to be replaced either.
  if (replaces && !check(::faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) == 0, "write")) return false;
  target = file;
  std::string beside = file.parent_path() / (std::string(".kvx-") + kvbGetUUID().asCstr());
  // A replaced file may be less open than a new one, which the process's own mask decides on.
  descriptor = calls::open(beside, O_CREAT | O_EXCL, replaces ? 0600 : 0666);
  if (descriptor >= 0) temporary.swap(beside);
  return check(descriptor >= 0, "create a file beside");
}

bool KvbOutputFile::State::write(const char* bytes, std::size_t length) noexcept {
  if (descriptor < 0) return fail("write", EBADF);
  if (length > sizeof buffer - buffered && !flush()) return false;
  if (length > sizeof buffer) return put(bytes, length);
  std::copy_n(bytes, length, buffer + buffered);
  buffered += length;
  return true;
}

bool KvbOutputFile::State::flush() noexcept { return put(buffer, std::exchange(buffered, 0)); }

bool KvbOutputFile::State::put(const char* bytes, std::size_t length) noexcept {
  BrokenPipeSignal heldOff;
  return check(calls::write(descriptor, bytes, length), "write");
}

bool KvbOutputFile::State::finish() noexcept {
  if (descriptor < 0) return fail("write", EBADF);
  if (!flush()) return false;
  if (temporary.empty()) return check(closeDescriptor(), "write");
  if (replaces && !check(calls::takePermissions(descriptor, replaced), "keep the permissions of")) return false;
  if (!check(::fsync(descriptor) == 0 && closeDescriptor(), "write")) return false;
  if (!check(::rename(temporary.c_str(), target.c_str()) == 0, "replace")) return false;
  temporary.clear();
  return true;
}

/** Closing is never repeated: the descriptor is gone even when it fails. */
bool KvbOutputFile::State::closeDescriptor() noexcept { return ::close(std::exchange(descriptor, -1)) == 0; }

void KvbOutputFile::State::discard() noexcept {
  if (descriptor >= 0) closeDescriptor();
  if (!temporary.empty()) ::unlink(temporary.c_str());
  temporary.clear();
}

bool KvbOutputFile::State::check(bool succeeded, const char* action) noexcept {
  return succeeded || fail(action, errno);
}

/** Keeps the reason and takes the temporary file away at once. */
bool KvbOutputFile::State::fail(const char* action, int code) noexcept {
  char reason[128];
  failed = true;
  error = kvbStringFormat("cannot %s \"%s\": %s", action, path.c_str(), ::strerror_r(code, reason, sizeof reason));
  discard();
  return false;
}

KvbOutputFile::KvbOutputFile() noexcept : state_(new (std::nothrow) State) {}

KvbOutputFile::~KvbOutputFile() { delete state_; }

bool KvbOutputFile::open(const KvbString& path) noexcept {
  if (!state_) return false;
  try {
    return state_->open(path);
  } catch (const std::bad_alloc&) {
    return state_->fail("open", ENOMEM);
  }
}

bool KvbOutputFile::write(const char* bytes, unsigned long length) noexcept {
  return state_ && !state_->failed && state_->write(bytes, length);
}

bool KvbOutputFile::commit() noexcept { return state_ && !state_->failed && state_->finish(); }

KvbString KvbOutputFile::getErrorMessage() const noexcept {
  return state_ ? state_->error : kvbStringFormat("cannot write: %s", std::strerror(ENOMEM));
}

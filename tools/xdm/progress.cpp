#include "progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using std::chrono::seconds;

constexpr char startOfEmptyLine[] = "\r\033[K";

struct Board {
  std::mutex mutex;
  std::string text = "working";
};

Board& board() {
  static Board only;
  return only;
}

bool isTerminal() {
  const char* kind = std::getenv("TERM");
  return isatty(STDERR_FILENO) && kind && std::strcmp(kind, "dumb") != 0 && !std::getenv("NO_COLOR");
}

// A longer text would go on in a second line, which stays when the first is taken back.
int roomForText() {
  constexpr int roomForTime = 20;
  winsize size = {};
  bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return std::max(0, (isKnown ? size.ws_col : 80) - roomForTime);
}

void print(long elapsed) {
  std::lock_guard<std::mutex> lock(board().mutex);
  std::fprintf(stderr, "%sxdm: %.*s (%ld s)", startOfEmptyLine, roomForText(), board().text.c_str(), elapsed);
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

}  // namespace

Progress::Progress(bool isQuiet) {
  if (!isQuiet && isTerminal()) thread_ = std::thread(&Progress::show, this);
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    hasEnded_ = true;
  }
  ended_.notify_one();
  thread_.join();
}

void Progress::show() {
  std::unique_lock<std::mutex> lock(mutex_);
  if (ended_.wait_for(lock, seconds(2), [this] { return hasEnded_; })) return;
  long elapsed = 2;
  do {
    print(elapsed++);
  } while (!ended_.wait_for(lock, seconds(1), [this] { return hasEnded_; }));
  std::fputs(startOfEmptyLine, stderr);
}

void tellProgress(const std::string& doing) {
  std::lock_guard<std::mutex> lock(board().mutex);
  board().text = doing;
  std::replace_if(board().text.begin(), board().text.end(), isControl, '?');  // a file's name may hold anything
}

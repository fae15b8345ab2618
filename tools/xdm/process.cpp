#include "process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <sstream>

#include "diagnostics.h"
#include "files.h"

namespace {

constexpr std::uintmax_t longestMessage = 1 << 20;

std::atomic<pid_t> runningChild{0};
std::atomic<int> outputOfChild{-1};
std::atomic<bool> isInterrupted{false};

// The output ends with the child, unless the child has children that write it too: these are not waited for.
void passOn(int signal) {
  isInterrupted = true;
  if (pid_t child = runningChild) {
    fcntl(outputOfChild, F_SETFL, O_NONBLOCK);
    kill(child, signal);
  }
}

/** While it lives, signals that ask this process to end go to the child, so that temporary files are still removed. */
class SignalRelay {
 public:
  SignalRelay() {
    struct sigaction action = {};
    action.sa_handler = &passOn;
    for (std::size_t i = 0; i < signals.size(); ++i) {
      sigaction(signals[i], nullptr, &before_[i]);
      // What this process was told to ignore, as nohup does, it goes on ignoring.
      if (before_[i].sa_handler != SIG_IGN) sigaction(signals[i], &action, nullptr);
    }
  }
  ~SignalRelay() {
    runningChild = 0;
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &before_[i], nullptr);
  }
  SignalRelay(const SignalRelay&) = delete;
  SignalRelay& operator=(const SignalRelay&) = delete;

 private:
  static constexpr std::array<int, 3> signals = {SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, 3> before_;
};

/** The child's descriptors and signals. */
class SpawnSettings {
 public:
  SpawnSettings(int output, int error) {
    check(posix_spawn_file_actions_init(&actions));
    check(posix_spawnattr_init(&attributes));
    check(posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0));
    check(posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO));
    check(posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO));
    sigset_t pipe;  // this process ignores broken pipes, which the child must not inherit
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    check(posix_spawnattr_setsigdefault(&attributes, &pipe));
    check(posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF));
  }
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;

  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;

 private:
  static void check(int problem) {
    if (problem != 0) throw std::bad_alloc();
  }
};

std::vector<std::string> environmentWith(const Environment& added) {
  std::vector<std::string> environment;
  for (const auto& [name, value] : added) environment.push_back(name + "=" + value);
  std::size_t own = environment.size();
  for (char** variable = environ; *variable; ++variable) {
    bool isHidden = false;
    for (std::size_t i = 0; i < own; ++i) {
      isHidden |= std::strncmp(*variable, environment[i].c_str(), added[i].first.size() + 1) == 0;
    }
    if (!isHidden) environment.emplace_back(*variable);
  }
  return environment;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

/** A pipe that other programs don't inherit. */
struct Pipe {
  Pipe() {
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw Failure(std::string("cannot make a pipe: ") + std::strerror(errno));
    reading.reset(fdopen(ends[0], "rb"));
    writing.reset(fdopen(ends[1], "wb"));
    if (!reading || !writing) throw std::bad_alloc();
  }

  File reading;
  File writing;
};

std::string describe(int status) {
  return WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                           : "signal " + std::to_string(WTERMSIG(status));
}

/** A program that runs and writes into a pipe. It is killed when it lives on until its object is destroyed. */
class Child {
 public:
  Child(const std::vector<std::string>& command, const Environment& environment) : error_(makeSpool()) {
    spawn(command, environmentWith(environment));
    pipe_.writing.reset();  // the end of the child alone is the end of the output
    outputOfChild = fileno(output());
    runningChild = pid_;
    if (isInterrupted) passOn(SIGTERM);
  }
  ~Child() {
    if (pid_ == 0) return;
    kill(pid_, SIGKILL);
    reap();
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  std::FILE* output() const { return pipe_.reading.get(); }

  /** Reads on to the end of the output; false when more is left than a message takes. */
  bool skipMessage() {
    Buffer buffer;
    for (std::uintmax_t length = 0; length < longestMessage;) {
      std::size_t read = isInterrupted ? 0 : std::fread(buffer.data(), 1, buffer.size(), output());
      if (read == 0) return true;
      length += read;
    }
    return false;
  }

  /** Waits for the end. What the child still writes to its output is lost. */
  ProcessEnd finish() {
    outputOfChild = -1;
    pipe_.reading.reset();
    std::optional<int> status = reap();
    if (isInterrupted) throw Failure("interrupted");
    if (!status) throw Failure("the system does not tell how a program ended");
    readFrom(error_.get(), 0);
    return {*status == 0, describe(*status), readText(error_.get(), longestMessage)};
  }

 private:
  void spawn(std::vector<std::string> words, std::vector<std::string> variables) {
    SpawnSettings settings(fileno(pipe_.writing.get()), fileno(error_.get()));
    int problem = posix_spawnp(&pid_, words[0].c_str(), &settings.actions, &settings.attributes, pointers(words).data(),
                               pointers(variables).data());
    if (problem != 0) throw Failure("cannot run '" + words[0] + "': " + std::strerror(problem));
  }

  std::optional<int> reap() {
    int status = 0;
    pid_t ended = 0;
    do {
      ended = waitpid(pid_, &status, 0);
    } while (ended < 0 && errno == EINTR);
    runningChild = pid_ = 0;
    return ended < 0 ? std::nullopt : std::optional(status);
  }

  Pipe pipe_;
  File error_;
  pid_t pid_ = 0;
};

}  // namespace

ProcessEnd runProcess(const std::vector<std::string>& command, const Environment& environment,
                      const OutputReader& read) {
  SignalRelay relay;
  Child child(command, environment);
  try {
    read(child.output());
  } catch (const Failure& problem) {
    // A program that fails breaks its output off, or writes a message there.
    if (!child.skipMessage()) throw;
    ProcessEnd end = child.finish();
    if (end.succeeded) throw;
    if (end.error.empty()) end.error = problem.details();
    return end;
  }
  return child.finish();
}

std::string findProgram(const std::string& name) {
  const char* places = std::getenv("PATH");
  std::istringstream list(places ? places : "");
  for (std::string place; std::getline(list, place, ':');) {
    std::string path = (place.empty() ? "." : place) + "/" + name;
    if (access(path.c_str(), X_OK) == 0) return path;
  }
  return "";
}

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
#include <sstream>

#include "diagnostics.h"

namespace {

constexpr std::uintmax_t longestError = 1 << 20;

std::atomic<pid_t> runningChild{0};
std::atomic<bool> isInterrupted{false};

void passOn(int signal) {
  isInterrupted = true;
  if (pid_t child = runningChild) kill(child, signal);
}

/** While it lives, signals that ask this process to end go to the child, so that temporary files are still removed. */
class SignalRelay {
 public:
  SignalRelay() {
    struct sigaction action = {};
    action.sa_handler = &passOn;
    for (std::size_t i = 0; i < signals.size(); ++i) sigaction(signals[i], &action, &before_[i]);
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

std::vector<std::string> environmentWith(const std::vector<std::pair<std::string, std::string>>& added) {
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

int waitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) throw Failure(std::string("cannot wait for a program: ") + std::strerror(errno));
  }
  return status;
}

std::string describe(int status) {
  return WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                           : "signal " + std::to_string(WTERMSIG(status));
}

}  // namespace

ProcessEnd runProcess(const std::vector<std::string>& command,
                      const std::vector<std::pair<std::string, std::string>>& environment, std::FILE* output) {
  File error = makeSpool();
  SpawnSettings settings(fileno(output), fileno(error.get()));
  std::vector<std::string> words = command;
  std::vector<std::string> variables = environmentWith(environment);
  SignalRelay relay;
  pid_t child = 0;
  int problem = posix_spawnp(&child, words[0].c_str(), &settings.actions, &settings.attributes, pointers(words).data(),
                             pointers(variables).data());
  if (problem != 0) throw Failure("cannot run '" + command[0] + "': " + std::strerror(problem));
  runningChild = child;
  if (isInterrupted) kill(child, SIGTERM);
  int status = waitFor(child);
  if (isInterrupted) throw Failure("interrupted");
  readFrom(error.get(), 0);
  return {status == 0, describe(status), readText(error.get(), longestError)};
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

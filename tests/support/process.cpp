#include "process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

#include "temporary.h"

namespace {

void redirect(const std::string& path, int flags, int descriptor) {
  int file = open(path.c_str(), flags, 0600);
  if (file < 0 || dup2(file, descriptor) < 0) _exit(126);
}

[[noreturn]] void become(const std::vector<std::string>& command,
                         const std::vector<std::pair<std::string, std::string>>& environment,
                         const TemporaryFolder& folder) {
  redirect(folder.file("in"), O_RDONLY, STDIN_FILENO);
  redirect(folder.file("out"), O_WRONLY | O_CREAT | O_TRUNC, STDOUT_FILENO);
  redirect(folder.file("err"), O_WRONLY | O_CREAT | O_TRUNC, STDERR_FILENO);
  for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

}  // namespace

ProcessResult runProcess(const std::vector<std::string>& command, std::string_view input,
                         const std::vector<std::pair<std::string, std::string>>& environment) {
  TemporaryFolder folder;
  folder.write("in", input);
  pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) become(command, environment, folder);
  int status = 0;
  if (waitpid(child, &status, 0) != child) throw std::runtime_error("cannot wait for " + command[0]);
  ProcessResult result;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.output = readFile(folder.file("out"));
  result.error = readFile(folder.file("err"));
  return result;
}

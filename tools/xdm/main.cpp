// The companion tool: looks at models, prints their queries and runs them.
// Tested by tests/tool.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <new>

#include "diagnostics.h"
#include "options.h"
#include "output.h"
#include "progress.h"

namespace {

enum ExitStatus { success = 0, failure = 1, wrongUsage = 2 };

// A file that is opened while a standard stream is closed would take its place. Reading it gives nothing, and writing
// it fails as it should.
void occupyStandardStreams() {
  for (int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", O_RDONLY);
  }
}

void runCommand(const Options& options, Output& output) {
  Progress progress(options.quiet);
  options.command(options, output);
}

ExitStatus run(int argc, char** argv) {
  CommandLine commandLine;
  try {
    std::optional<Options> options = commandLine.parse(argc, argv);
    if (!options) return success;
    if (options->quiet) silenceWarnings();
    Output output(options->output);
    runCommand(*options, output);
    output.finish();
    return success;
  } catch (const WrongUsage& wrong) {
    printError(wrong.what(), commandLine.usage());
    return wrongUsage;
  }
}

ExitStatus tryRun(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const Failure& problem) {
    printError(problem.what(), problem.details());
  } catch (const std::bad_alloc&) {
    printError("memory is exhausted");
  } catch (const std::exception& problem) {
    printError(problem.what());
  }
  return failure;
}

}  // namespace

int main(int argc, char** argv) {
  occupyStandardStreams();
  std::signal(SIGPIPE, SIG_IGN);
  ExitStatus status = tryRun(argc, argv);
  printWarnings();
  return status;
}

// Runs another program, without a shell.
// Tested by tests/tool/xdm_rows_test.cpp.
#ifndef XDM_PROCESS_H
#define XDM_PROCESS_H

#include <string>
#include <utility>
#include <vector>

#include "files.h"

/** How a program ended. */
struct ProcessEnd {
  bool succeeded;
  std::string how;    // "exit status 2", "signal 9"
  std::string error;  // what it wrote to standard error
};

/** Runs `command` with nothing on standard input, `environment` added to this process's, and standard output to
 * `output`. Throws Failure when the program can't be started or the user interrupts. */
ProcessEnd runProcess(const std::vector<std::string>& command,
                      const std::vector<std::pair<std::string, std::string>>& environment, std::FILE* output);

/** The path of program `name` on PATH; empty without one. */
std::string findProgram(const std::string& name);

#endif

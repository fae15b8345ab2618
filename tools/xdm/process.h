// Runs another program, without a shell.
// Tested by tests/tool/xdm_process_test.cpp.
#ifndef XDM_PROCESS_H
#define XDM_PROCESS_H

#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/** How a program ended. */
struct ProcessEnd {
  bool succeeded;
  std::string how;    // "exit status 2", "signal 9"
  std::string error;  // what it wrote to standard error, or what was wrong with its output when it wrote nothing there
};

using Environment = std::vector<std::pair<std::string, std::string>>;

/** Reads what a program writes to standard output, to the end. */
using OutputReader = std::function<void(std::FILE*)>;

/**
 * Runs `command` with nothing on standard input and `environment` added to this process's, and calls `read` while it
 * runs. What `read` throws comes out, unless the program itself failed by then: the end that it came to explains more.
 * It never outlives the call: where its end is not waited for, it is killed. Throws Failure when it can't be started or
 * the user interrupts.
 */
ProcessEnd runProcess(const std::vector<std::string>& command, const Environment& environment,
                      const OutputReader& read);

/** The path of program `name` on PATH; empty without one. */
std::string findProgram(const std::string& name);

#endif

// Runs another program and keeps what it says.
#ifndef KVXDM_TESTS_PROCESS_H
#define KVXDM_TESTS_PROCESS_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct ProcessResult {
  int status = -1;  // exit status; 128 + signal when killed
  std::string output;
  std::string error;
};

/** Runs `command` (program and arguments, no shell) with `input` on standard input and `environment` added to this
 * process's. */
ProcessResult runProcess(const std::vector<std::string>& command, std::string_view input = {},
                         const std::vector<std::pair<std::string, std::string>>& environment = {});

#endif

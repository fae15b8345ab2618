// Runs one workload once, for scripts/check-growth: callgrind counts the instructions of the work and of nothing else.
//   kvxdm_bench_once WORKLOAD SIZE
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "case.h"

int main(int argc, char** argv) {
  const Workloads workloads = allWorkloads();
  const auto workload = std::find_if(workloads.begin(), workloads.end(),
                                     [&](const Workload& candidate) { return argc == 3 && candidate.name == argv[1]; });
  if (workload == workloads.end()) {
    std::fprintf(stderr, "kvxdm_bench_once WORKLOAD SIZE\n");
    return 2;
  }
  const Case made = workload->at(std::stol(argv[2]));
  // What is made on first use, here and in the libraries, does not count.
  made.prepare();
  made.work();
  made.prepare();
  CALLGRIND_START_INSTRUMENTATION;
  made.work();
  CALLGRIND_STOP_INSTRUMENTATION;
  std::printf("%ld\n", made.items);
  return 0;
}

// Time and memory of a piece of work.
#include "measure.h"

#include <malloc.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

double now(Clock clock) {
  timespec time;
  clock_gettime(clock == Clock::thread ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/** A line of /proc/self/status, which counts in kilobytes. */
long statusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(name + ":")) return std::stol(line.substr(name.size() + 1)) * 1024;
  }
  throw std::runtime_error("no " + name + " in /proc/self/status");
}

void resetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

long growthDuring(const std::function<void()>& work) {
  malloc_trim(0);
  resetPeak();
  const long before = statusBytes("VmRSS");
  work();
  return statusBytes("VmHWM") - before;
}

}  // namespace

double secondsOf(Clock clock, const std::function<void()>& work) {
  const double start = now(clock);
  work();
  return now(clock) - start;
}

double medianOf(std::vector<double> samples) {
  const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
  std::nth_element(samples.begin(), middle, samples.end());
  return *middle;
}

long peakBytesOf(const std::function<void()>& prepare, const std::function<void()>& work) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    prepare();
    const long growth = growthDuring(work);
    _exit(write(ends[1], &growth, sizeof growth) == sizeof growth ? 0 : 1);
  }
  close(ends[1]);
  long growth = 0;
  const bool told = child > 0 && read(ends[0], &growth, sizeof growth) == sizeof growth;
  close(ends[0]);
  waitpid(child, nullptr, 0);
  if (!told) throw std::runtime_error("memory could not be measured");
  return growth;
}

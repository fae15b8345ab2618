// What a person at a terminal sees of work that takes long.
// Tested by tests/tool/xdm_progress_test.cpp.
#ifndef XDM_PROGRESS_H
#define XDM_PROGRESS_H

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

/**
 * While it lives, a line on standard error tells what is being done, from the third second on. There is none when
 * `isQuiet`, when standard error is no terminal that can take a line back, or when NO_COLOR is set.
 */
class Progress {
 public:
  explicit Progress(bool isQuiet);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

 private:
  void show();

  std::mutex mutex_;
  std::condition_variable ended_;
  bool hasEnded_ = false;
  std::thread thread_;
};

/** Says what is being done from now on. */
void tellProgress(const std::string& doing);

#endif

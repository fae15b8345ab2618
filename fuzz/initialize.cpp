// Makes a property that does not hold end the process, as libFuzzer expects it.
#include <gtest/gtest.h>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  GTEST_FLAG_SET(throw_on_failure, true);
  return 0;
}

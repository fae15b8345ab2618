// Tests how the shared objects are hardened: what readelf and nm see of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "process.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const char* const libraries[] = {KVXDM_LIBRARY, KVXBASE_LIBRARY, KVXDOM_LIBRARY, KVXLOG_LIBRARY};

std::string readelf(const char* what, const char* library) {
  return runProcess({"readelf", "-W", what, library}, {}, {{"LC_ALL", "C"}}).output;
}

TEST(Hardening, RelocationsAreReadOnlyOnceTheLibraryIsLoaded) {
  for (const char* library : libraries) {
    EXPECT_THAT(readelf("-l", library), HasSubstr("GNU_RELRO")) << library;
    EXPECT_THAT(readelf("-d", library), HasSubstr("BIND_NOW")) << library;
  }
}

TEST(Hardening, NothingOnAStackIsExecuted) {
  for (const char* library : libraries) {
    const std::string headers = readelf("-l", library);
    const std::string stack = headers.substr(headers.find("GNU_STACK"));
    EXPECT_THAT(stack.substr(0, stack.find('\n')), Not(HasSubstr("RWE"))) << library;
  }
}

TEST(Hardening, NoCodeIsChangedToBeLoaded) {
  for (const char* library : libraries) EXPECT_THAT(readelf("-d", library), Not(HasSubstr("TEXTREL"))) << library;
}

TEST(Hardening, FunctionsWithBuffersProtectTheirStack) {
  for (const char* library : libraries) {
    EXPECT_THAT(runProcess({"nm", "-D", library}).output, HasSubstr("__stack_chk_fail")) << library;
  }
}

}  // namespace

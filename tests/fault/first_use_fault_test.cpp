// Tests the first use of the library in a process with exhausted memory: each attempt is made in a process of its own.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <new>

#include <kvxdm/kvxdm.h>

#include "library_model.h"
#include "process_faults.h"
#include "texts.h"

namespace {

constexpr int whole = 0;
constexpr int nothing = 1;
constexpr int between = 2;
constexpr int metAFault = 4;

/** Makes a main object, fills it and saves it, then does so again with memory; how that went. */
int useOnce(long nth, ProcessFaults::Extent extent) {
  const KvbString document = kv(libraryModel);
  bool saved = false, met;
  KvbString xml, error;
  {
    ProcessFaults faults(nth, extent);
    try {
      XDMMainPtr main(kvxdmCreateMain(0x80000000u));
      saved = main->loadFromXML(document, &error) && main->saveToXML(&xml, &error);
    } catch (const std::bad_alloc&) {
      xml.setNull();
    }
    met = faults.met();
  }
  XDMMainPtr again(kvxdmCreateMain(0));
  const bool loaded = again->loadFromXML(document, &error);
  // The XML parser takes no second beginning after one that failed half-way; that is an ordinary failure from then on.
  const bool answered = loaded || str(error) == catalogue(1429);
  const bool sound = answered && (saved ? str(xml) == libraryModel : xml.length() == 0);
  return (sound ? (saved ? whole : nothing) : between) + (met ? metAFault : 0);
}

/** The result of useOnce in a process of its own. */
int useInAProcess(long nth, ProcessFaults::Extent extent) {
  const pid_t child = fork();
  if (child == 0) _exit(useOnce(nth, extent));
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status)) << "allocation " << nth;
  return WEXITSTATUS(status);
}

/** Whether a failure was met. */
bool attempt(long nth, ProcessFaults::Extent extent) {
  const int result = useInAProcess(nth, extent);
  EXPECT_EQ(result & between, 0) << "allocation " << nth;
  EXPECT_TRUE((result & metAFault) != 0 || result == whole);
  return (result & metAFault) != 0;
}

// The XML parser begins with thousands of allocations in a row, so only some of them are made to fail: the first ones,
// which are the library's own, and one of each so many.
TEST(FirstUseFault, IsAFailureOrTheWholeResult) {
  constexpr long everyOne = 30;
  constexpr long stride = 61;
  bool met = true;
  for (long nth = 1; met; nth += nth < everyOne ? 1 : stride) {
    met = attempt(nth, ProcessFaults::Extent::once);
    attempt(nth, ProcessFaults::Extent::fromThenOn);
  }
}

}  // namespace

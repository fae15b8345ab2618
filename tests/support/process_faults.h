// Makes any allocation of the process fail on demand, whoever asks: the library, the C++ library or Xerces-C.
#ifndef KVXDM_TESTS_PROCESS_FAULTS_H
#define KVXDM_TESTS_PROCESS_FAULTS_H

#include "allocation_faults.h"

/**
 * While it lives, allocation number `nth` (1 is the next one) of this thread fails; with `fromThenOn` all later ones
 * too. It stands before malloc, calloc, realloc, the aligned forms and so before every operator new of every shared
 * object. One at a time in a thread.
 */
class ProcessFaults {
 public:
  using Extent = AllocationFaults::Extent;

  ProcessFaults(long nth, Extent extent) noexcept;
  ~ProcessFaults();
  ProcessFaults(const ProcessFaults&) = delete;
  ProcessFaults& operator=(const ProcessFaults&) = delete;

  /** Whether an allocation was made to fail. */
  bool met() const noexcept;

  /** Whether one that Xerces-C had asked for was: it leaves memory behind when it has none. */
  bool metInXerces() const noexcept;
};

/** The bytes that this process has on its heap, as the heap counts them: a block may be bigger than was asked for. */
long liveBytes() noexcept;

/** The blocks that this process has on its heap. */
long liveBlocks() noexcept;

#endif

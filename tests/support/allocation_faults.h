// Makes allocations fail on demand: every form of operator new, and the library's realloc.
#ifndef KVXDM_TESTS_ALLOCATION_FAULTS_H
#define KVXDM_TESTS_ALLOCATION_FAULTS_H

#include <initializer_list>

/** While it lives, allocation number `nth` (1 is the next one) of this thread fails; with `fromThenOn` all later ones
 * too. One at a time in a thread. */
class AllocationFaults {
 public:
  enum class Extent { once, fromThenOn };

  AllocationFaults(long nth, Extent extent) noexcept;
  ~AllocationFaults();
  AllocationFaults(const AllocationFaults&) = delete;
  AllocationFaults& operator=(const AllocationFaults&) = delete;

  /** Whether an allocation was made to fail. */
  bool met() const noexcept;
};

/** The number of allocations that this thread has asked for so far. */
long allocationsSoFar() noexcept;

/**
 * Runs `attempt` with allocation 1, 2, 3, ... failing until an attempt meets no failure, each time once with one
 * failure and once with all from there on. `attempt` gets the AllocationFaults armed and must check its own outcome.
 * Returns the number of allocation points met.
 */
template <class Attempt>
long sweepAllocationFaults(Attempt attempt) {
  for (long nth = 1;; ++nth) {
    bool met = false;
    for (auto extent : {AllocationFaults::Extent::once, AllocationFaults::Extent::fromThenOn}) {
      met = attempt(nth, extent) || met;
    }
    if (!met) return nth - 1;
  }
}

#endif

#include "allocation_faults.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long requested = 0;
thread_local long failingRequest = 0;  // 0: none
thread_local bool failingFromThenOn = false;
thread_local bool failureMet = false;

bool fails() noexcept {
  ++requested;
  if (failingRequest == 0) return false;
  bool failing = failingFromThenOn ? requested >= failingRequest : requested == failingRequest;
  if (failing) failureMet = true;
  return failing;
}

void* allocate(std::size_t size) noexcept { return fails() ? nullptr : std::malloc(size ? size : 1); }

void* allocateOrThrow(std::size_t size) {
  void* memory = allocate(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

AllocationFaults::AllocationFaults(long nth, Extent extent) noexcept {
  failureMet = false;
  failingFromThenOn = extent == Extent::fromThenOn;
  failingRequest = requested + nth;
}

AllocationFaults::~AllocationFaults() { failingRequest = 0; }

bool AllocationFaults::met() const noexcept { return failureMet; }

long allocationsSoFar() noexcept { return requested; }

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

extern "C" {
void* __real_realloc(void* memory, std::size_t size);
// Visible, since the linker looks at the shared objects' use of realloc too.
__attribute__((visibility("default"))) void* __wrap_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size) { return fails() ? nullptr : __real_realloc(memory, size); }
}

#include "process_faults.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <malloc.h>

#include <atomic>
#include <cerrno>
#include <cstring>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace {

constexpr int framesLookedAt = 12;

std::atomic<long> bytes = 0;
std::atomic<long> blocks = 0;

thread_local long requested = 0;
thread_local long failingRequest = 0;  // 0: none
thread_local bool failingFromThenOn = false;
thread_local bool failureMet = false;
thread_local bool failureMetInXerces = false;

bool liesIn(void* address, const char* library) noexcept {
  Dl_info found;
  return dladdr(address, &found) != 0 && std::strstr(found.dli_fname, library);
}

/** Whether the nearest caller that is neither this program nor the C or C++ library is Xerces-C. */
bool isCalledByXerces() noexcept {
  void* frames[framesLookedAt];
  const int count = backtrace(frames, framesLookedAt);
  for (int i = 0; i < count; ++i) {
    if (liesIn(frames[i], "libxerces")) return true;
    if (liesIn(frames[i], "libkvx")) return false;
  }
  return false;
}

/** Looks the caller up with the faults put off, since the look-up may allocate. */
void noteFailure() noexcept {
  const long failing = failingRequest;
  failingRequest = 0;
  failureMet = true;
  if (isCalledByXerces()) failureMetInXerces = true;
  failingRequest = failing;
}

bool fails() noexcept {
  if (failingRequest == 0) return false;
  ++requested;
  const bool failing = failingFromThenOn ? requested >= failingRequest : requested == failingRequest;
  if (failing) noteFailure();
  return failing;
}

void* noMemory() noexcept {
  errno = ENOMEM;
  return nullptr;
}

void* counted(void* memory) noexcept {
  bytes += static_cast<long>(malloc_usable_size(memory));
  if (memory) ++blocks;
  return memory;
}

void discount(void* memory) noexcept {
  bytes -= static_cast<long>(malloc_usable_size(memory));
  if (memory) --blocks;
}

}  // namespace

ProcessFaults::ProcessFaults(long nth, Extent extent) noexcept {
  isCalledByXerces();  // the first look-up loads what it needs
  failureMet = false;
  failureMetInXerces = false;
  failingFromThenOn = extent == Extent::fromThenOn;
  requested = 0;
  failingRequest = nth;
}

ProcessFaults::~ProcessFaults() { failingRequest = 0; }

bool ProcessFaults::met() const noexcept { return failureMet; }

bool ProcessFaults::metInXerces() const noexcept { return failureMetInXerces; }

long liveBytes() noexcept { return bytes; }

long liveBlocks() noexcept { return blocks; }

// What the whole process calls in the place of the C library's own.

#pragma GCC visibility push(default)
extern "C" {

void* malloc(size_t size) noexcept { return fails() ? noMemory() : counted(__libc_malloc(size)); }

void* calloc(size_t count, size_t size) noexcept { return fails() ? noMemory() : counted(__libc_calloc(count, size)); }

void* realloc(void* memory, size_t size) noexcept {
  if (fails()) return noMemory();
  discount(memory);
  void* moved = __libc_realloc(memory, size);
  return counted(moved || size == 0 ? moved : memory);
}

void* memalign(size_t alignment, size_t size) noexcept {
  return fails() ? noMemory() : counted(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) noexcept { return memalign(alignment, size); }

int posix_memalign(void** memory, size_t alignment, size_t size) noexcept {
  void* made = memalign(alignment, size);
  if (!made) return ENOMEM;
  *memory = made;
  return 0;
}

void free(void* memory) noexcept {
  discount(memory);
  __libc_free(memory);
}
}
#pragma GCC visibility pop

// Random identifiers from the kernel's random source.
// Tested by tests/unit/kvbuuid_test.cpp.
#include <kvxbase/kvbuuid.h>

#include <unistd.h>

#include <new>

namespace {

struct RandomBytes {
  unsigned char at[16];
};

/** Without the random source there is no identifier; that is reported as the one failure that callers handle. */
RandomBytes randomBytes() {
  RandomBytes bytes;
  if (::getentropy(bytes.at, sizeof bytes.at) != 0) throw std::bad_alloc();
  return bytes;
}

void markAsVersion4(RandomBytes* bytes) noexcept {
  bytes->at[6] = static_cast<unsigned char>((bytes->at[6] & 0x0f) | 0x40);
  bytes->at[8] = static_cast<unsigned char>((bytes->at[8] & 0x3f) | 0x80);
}

bool hyphenStandsBefore(unsigned index) noexcept { return index == 4 || index == 6 || index == 8 || index == 10; }

}  // namespace

KvbString kvbGetUUID() {
  constexpr char digits[] = "0123456789abcdef";
  RandomBytes bytes = randomBytes();
  markAsVersion4(&bytes);
  char text[36];
  char* next = text;
  for (unsigned i = 0; i < sizeof bytes.at; ++i) {
    if (hyphenStandsBefore(i)) *next++ = '-';
    *next++ = digits[bytes.at[i] >> 4];
    *next++ = digits[bytes.at[i] & 0x0f];
  }
  return KvbString(text, static_cast<unsigned>(next - text));
}

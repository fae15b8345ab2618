// printf-style formatting into a KvbString.
// Tested by tests/unit/kvbstring_test.cpp.
#include <kvxbase/kvbstring.h>

#include <cstdio>
#include <memory>
#include <new>

namespace {

KvbString toString(const char* bytes, unsigned length) noexcept {
  KvbString text("", 0u);
  bool failed = false;
  text.append(bytes, length, &failed);
  return failed ? KvbString() : text;
}

__attribute__((format(printf, 1, 0))) KvbString formatLong(const char* format, va_list arguments,
                                                           unsigned length) noexcept {
  std::size_t size = static_cast<std::size_t>(length) + 1;
  std::unique_ptr<char[]> buffer(new (std::nothrow) char[size]);
  if (!buffer) return KvbString();
  std::vsnprintf(buffer.get(), size, format, arguments);
  return toString(buffer.get(), length);
}

}  // namespace

KvbString kvbStringFormatList(const char* format, va_list arguments) noexcept {
  char buffer[256];
  va_list again;
  va_copy(again, arguments);
  int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
  unsigned size = static_cast<unsigned>(length);
  KvbString text;
  if (length >= 0) text = size < sizeof buffer ? toString(buffer, size) : formatLong(format, again, size);
  va_end(again);
  return text;
}

KvbString kvbStringFormat(const char* format, ...) noexcept {
  va_list arguments;
  va_start(arguments, format);
  KvbString text = kvbStringFormatList(format, arguments);
  va_end(arguments);
  return text;
}

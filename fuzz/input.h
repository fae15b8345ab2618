// Takes the bytes of a fuzzed input apart.
#ifndef KVXDM_FUZZ_INPUT_H
#define KVXDM_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

/** Hands out an input from the front. At its end there are zeros and empty texts. */
class Input {
 public:
  Input(const std::uint8_t* bytes, std::size_t size) : rest_(reinterpret_cast<const char*>(bytes), size) {}

  explicit Input(std::string_view text) : rest_(text) {}

  bool atEnd() const { return rest_.empty(); }

  /** The next byte. */
  unsigned char byte() {
    const std::string_view taken = text(1);
    return taken.empty() ? 0 : static_cast<unsigned char>(taken.front());
  }

  /** A number from 0 and below `below`, which is at most 256: the next byte. */
  int number(int below) { return byte() % below; }

  /** The next `length` bytes, fewer at the end. */
  std::string_view text(std::size_t length) {
    const std::string_view taken = rest_.substr(0, length);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  /** What comes before the next line feed, which is skipped. */
  std::string_view line() {
    const std::string_view taken = text(rest_.find('\n'));
    text(1);
    return taken;
  }

  std::string_view rest() { return text(rest_.size()); }

 private:
  std::string_view rest_;
};

#endif

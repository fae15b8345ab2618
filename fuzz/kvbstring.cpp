// Holds KvbString against std::string: three strings that share texts, and the operations that the input asks for.
#include <gtest/gtest.h>
#include <kvxbase/kvbstring.h>

#include <array>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "input.h"
#include "texts.h"

namespace {

// Strings that double with every operation would soon be all that an input does.
constexpr std::size_t longest = 10'000;
constexpr std::size_t longestReplaced = 300;

/** A string and what must be in it. */
struct Slot {
  KvbString real;
  std::string plain = {};
  bool isNull = true;
};

int sign(int number) { return (number > 0) - (number < 0); }

std::string folded(std::string text) {
  for (char& each : text) {
    if (each >= 'A' && each <= 'Z') each = static_cast<char>(each - 'A' + 'a');
  }
  return text;
}

int position(std::size_t found) { return found == std::string::npos ? -1 : static_cast<int>(found); }

std::string middle(const std::string& text, unsigned start, int count) {
  if (start >= text.size()) return {};
  return text.substr(start, count < 0 ? std::string::npos : static_cast<std::size_t>(count));
}

bool isWhite(char character) { return character != '\0' && std::strchr(" \t\n\r\f\v", character); }

/** The number that `text` spells within 32 bits, by its digits. */
bool spellsNumber(std::string text, int* number) {
  while (!text.empty() && isWhite(text.back())) text.pop_back();
  while (!text.empty() && isWhite(text.front())) text.erase(0, 1);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.erase(0, 1);
  if (text.empty()) return false;
  long long value = 0;
  for (char digit : text) {
    if (digit < '0' || digit > '9') return false;
    value = std::min(value * 10 + (digit - '0'), 1LL << 40);
  }
  value = negative ? -value : value;
  *number = static_cast<int>(value);
  return value >= INT_MIN && value <= INT_MAX;
}

class Strings {
 public:
  explicit Strings(Input input) : input_(input) {}

  void run() {
    while (!input_.atEnd()) {
      const auto operation =
          operations.at(static_cast<std::size_t>(input_.number(static_cast<int>(operations.size()))));
      (this->*operation)();
      for (const Slot& slot : slots_) compare(slot);
    }
  }

 private:
  static const std::vector<void (Strings::*)()> operations;

  Slot& any() { return slots_.at(static_cast<std::size_t>(input_.number(3))); }
  std::string text() { return std::string(input_.text(static_cast<std::size_t>(input_.number(40)))); }
  int number() { return input_.number(64) - 8; }

  static void compare(const Slot& slot) {
    EXPECT_EQ(str(slot.real), slot.plain);
    EXPECT_EQ(slot.real.isNull(), slot.isNull);
    EXPECT_EQ(slot.real.asCstr()[slot.plain.size()], '\0');
  }

  static void set(Slot& slot, const std::string& plain) {
    slot.plain = plain;
    slot.isNull = false;
  }

  void takeBytes() {
    Slot& slot = any();
    const std::string bytes = text();
    slot.real = kv(bytes);
    set(slot, bytes);
  }

  void assignText() {
    Slot& slot = any();
    const std::string bytes = text();
    slot.real.assign(bytes.c_str());
    set(slot, bytes.c_str());
  }

  void assignNumber() {
    Slot& slot = any();
    int value = 0;
    const std::string_view bytes = input_.text(sizeof value);
    std::memcpy(&value, bytes.data(), bytes.size());
    slot.real.assign(value);
    set(slot, std::to_string(value));
    EXPECT_EQ(slot.real.asInt(nullptr), value);
  }

  void makeNull() {
    Slot& slot = any();
    slot.real.setNull();
    slot = Slot();
  }

  void copy() {
    Slot& to = any();
    to = any();
  }

  void move() {
    Slot& to = any();
    Slot& from = any();
    if (&to == &from) return;
    to.real = std::move(from.real);
    set(to, from.plain);
    to.isNull = from.isNull;
    from.plain.clear();
    from.isNull = true;
  }

  void append() {
    Slot& to = any();
    Slot& from = any();
    const std::string more = from.plain;
    if (to.plain.size() > longest) return;
    bool failed = false;
    to.real.append(from.real, &failed);
    EXPECT_FALSE(failed);
    appended(to, more);
  }

  void appendBytes() {
    Slot& slot = any();
    const std::string bytes = text();
    slot.real.append(bytes.data(), static_cast<unsigned>(bytes.size()), nullptr);
    appended(slot, bytes);
  }

  void appendOwnBytes() {
    Slot& slot = any();
    const std::size_t start = std::min<std::size_t>(input_.byte(), slot.plain.size());
    const std::string bytes = slot.plain.substr(start, input_.byte());
    slot.real.append(slot.real.asCstr() + start, static_cast<unsigned>(bytes.size()), nullptr);
    appended(slot, bytes);
  }

  /** Nothing appended leaves a null string null. */
  static void appended(Slot& slot, const std::string& more) {
    slot.plain += more;
    slot.isNull = slot.isNull && more.empty();
  }

  void compareTwo() {
    const Slot& left = any();
    const Slot& right = any();
    EXPECT_EQ(sign(left.real.compare(right.real, true)), sign(left.plain.compare(right.plain)));
    EXPECT_EQ(sign(left.real.compare(right.real, false)), sign(folded(left.plain).compare(folded(right.plain))));
    EXPECT_EQ(sign(left.real.compare(right.plain.c_str(), true)), sign(left.plain.compare(right.plain.c_str())));
    EXPECT_EQ(KvbStringLess()(left.real, right.real), left.plain < right.plain);
  }

  void find() {
    const Slot& slot = any();
    const Slot& what = any();
    const int from = number();
    EXPECT_EQ(slot.real.find(what.real, from),
              position(slot.plain.find(what.plain, static_cast<std::size_t>(std::max(from, 0)))));
    EXPECT_EQ(slot.real.rfind(what.real), position(slot.plain.rfind(what.plain)));
  }

  void takeMiddle() {
    Slot& to = any();
    const Slot& from = any();
    const unsigned start = input_.byte();
    const int count = number();
    EXPECT_EQ(str(from.real.right(count)),
              count <= 0 ? ""
                         : from.plain.substr(from.plain.size() -
                                             std::min(from.plain.size(), static_cast<std::size_t>(count))));
    const std::string plain = middle(from.plain, start, count);
    to.real = from.real.mid(start, count);
    set(to, plain);
    to.isNull = to.real.isNull();
  }

  void replace() {
    Slot& slot = any();
    const std::string what = any().plain, with = any().plain;
    const unsigned from = input_.byte();
    const int count = input_.number(8) - 1;
    if (std::max(slot.plain.size(), with.size()) > longestReplaced) return;
    slot.real.replace(kv(what), kv(with), from, count);
    replacePlain(slot.plain, what, with, from, count);
  }

  static void replacePlain(std::string& text, const std::string& what, const std::string& with, std::size_t from,
                           int count) {
    for (; !what.empty() && count != 0; --count) {
      from = text.find(what, from);
      if (from == std::string::npos) return;
      text.replace(from, what.size(), with);
      from += with.size();
    }
  }

  void trim() {
    Slot& slot = any();
    const int ends = input_.number(4);
    slot.real.trim(ends & 1, ends & 2);
    while ((ends & 1) && !slot.plain.empty() && isWhite(slot.plain.front())) slot.plain.erase(0, 1);
    while ((ends & 2) && !slot.plain.empty() && isWhite(slot.plain.back())) slot.plain.pop_back();
  }

  void truncate() {
    Slot& slot = any();
    const unsigned length = input_.byte();
    slot.real.truncate(length);
    slot.plain = slot.plain.substr(0, length);
  }

  void readNumber() {
    const Slot& slot = any();
    int expected = 0;
    const bool spelled = spellsNumber(slot.plain, &expected);
    bool failed = false;
    EXPECT_EQ(slot.real.asInt(&failed), spelled ? expected : 0);
    EXPECT_EQ(failed, !spelled);
  }

  Input input_;
  std::array<Slot, 3> slots_;
};

const std::vector<void (Strings::*)()> Strings::operations = {
    &Strings::takeBytes,      &Strings::assignText, &Strings::assignNumber, &Strings::makeNull,
    &Strings::copy,           &Strings::move,       &Strings::append,       &Strings::appendBytes,
    &Strings::appendOwnBytes, &Strings::compareTwo, &Strings::find,         &Strings::takeMiddle,
    &Strings::replace,        &Strings::trim,       &Strings::truncate,     &Strings::readNumber,
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Strings(Input(data, size)).run();
  return 0;
}

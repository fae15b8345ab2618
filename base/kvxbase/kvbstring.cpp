// The text behind KvbString: a counted block of bytes that copies share until one of them changes.
// Tested by tests/unit/kvbstring_test.cpp.
#include <kvxbase/kvbstring.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstring>
#include <functional>
#include <new>
#include <string_view>
#include <utility>

/** A block: this head, then `capacity` bytes and a NUL. A capacity of 0 marks the one block that is never counted. */
struct __attribute__((visibility("hidden"))) KvbString::Text {
  std::atomic<long> count;
  unsigned length;
  unsigned capacity;

  char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
  bool isCounted() const noexcept { return capacity != 0; }

  /** A block of its own, count 1, without text; null when memory is exhausted or the text could not be measured. */
  static Text* create(std::size_t capacity) noexcept;
  /** A block with a copy of the bytes; the empty one needs no memory. Throws std::bad_alloc. */
  static Text* copyOf(const char* bytes, unsigned length);
  static Text* empty() noexcept;

  void retain() noexcept;
  void put(const char* from, unsigned size) noexcept;
};

namespace {

constexpr std::size_t maximumLength = INT_MAX;
constexpr std::size_t leastGrowth = 23;  // with the head and the NUL this fills an allocation unit

/** The length of `text`; one too long to be held stays too long. */
unsigned lengthOf(const char* text) noexcept {
  return static_cast<unsigned>(std::min<std::size_t>(std::strlen(text), UINT_MAX));
}

std::string_view viewOf(const KvbString& string) noexcept {
  return {string.asCstr(), static_cast<std::size_t>(string.length())};
}

int positionOf(std::size_t found) noexcept { return found == std::string_view::npos ? -1 : static_cast<int>(found); }

unsigned char folded(char character) noexcept {
  bool isUpper = character >= 'A' && character <= 'Z';
  return static_cast<unsigned char>(isUpper ? character - 'A' + 'a' : character);
}

int compareFolded(std::string_view left, std::string_view right) noexcept {
  std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    int difference = folded(left[i]) - folded(right[i]);
    if (difference != 0) return difference;
  }
  return left.size() < right.size() ? -1 : left.size() > right.size();
}

int compareViews(std::string_view left, std::string_view right, bool caseSensitive) noexcept {
  return caseSensitive ? left.compare(right) : compareFolded(left, right);
}

std::string_view trimmed(std::string_view text, bool left, bool right) noexcept {
  constexpr std::string_view whiteSpace = " \t\n\r\f\v";
  if (left) text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
  if (right) text = text.substr(0, text.find_last_not_of(whiteSpace) + 1);
  return text;
}

/** Whether `text` spells a number of 32 bits; if so `*value` receives it. */
bool parseInt(std::string_view text, int* value) noexcept {
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return false;
  }
  const char* end = text.data() + text.size();
  auto [stop, error] = std::from_chars(text.data(), end, *value);
  return error == std::errc() && stop == end;
}

}  // namespace

KvbString::Text* KvbString::Text::create(std::size_t capacity) noexcept {
  if (capacity > maximumLength) return nullptr;
  void* memory = ::operator new(sizeof(Text) + capacity + 1, std::nothrow);
  return memory ? new (memory) Text{1, 0, static_cast<unsigned>(capacity)} : nullptr;
}

KvbString::Text* KvbString::Text::copyOf(const char* bytes, unsigned length) {
  if (length == 0) return empty();
  Text* text = create(length);
  if (!text) throw std::bad_alloc();
  text->put(bytes, length);
  return text;
}

KvbString::Text* KvbString::Text::empty() noexcept {
  static constinit struct {
    Text head;
    char nul;
  } block = {{1, 0, 0}, '\0'};
  return &block.head;
}

void KvbString::Text::retain() noexcept {
  if (isCounted()) count.fetch_add(1, std::memory_order_relaxed);
}

void KvbString::Text::put(const char* from, unsigned size) noexcept {
  std::memmove(bytes(), from, size);
  bytes()[size] = '\0';
  length = size;
}

KvbString::KvbString(const char* text, bool) : text_(text ? Text::copyOf(text, lengthOf(text)) : nullptr) {}

KvbString::KvbString(const char* bytes, unsigned length) : text_(Text::copyOf(bytes, length)) {}

KvbString::KvbString(const KvbString& other) noexcept : text_(other.text_) {
  if (text_) text_->retain();
}

KvbString& KvbString::operator=(const KvbString& other) noexcept {
  if (text_ == other.text_) return *this;
  if (other.text_) other.text_->retain();
  if (text_) releaseText();
  text_ = other.text_;
  return *this;
}

KvbString& KvbString::operator=(KvbString&& other) noexcept {
  Text* taken = std::exchange(other.text_, nullptr);
  if (text_) releaseText();
  text_ = taken;
  return *this;
}

void KvbString::assign(const char* text) {
  if (text) {
    adopt(text, lengthOf(text));
  } else {
    setNull();
  }
}

void KvbString::assign(int number) {
  char digits[12];
  auto [end, error] = std::to_chars(digits, digits + sizeof digits, number);
  adopt(digits, static_cast<unsigned>(end - digits));
}

void KvbString::append(const KvbString& text, bool* failed) noexcept {
  append(text.asCstr(), static_cast<unsigned>(text.length()), failed);
}

void KvbString::append(const char* text, bool* failed) noexcept {
  if (text) append(text, lengthOf(text), failed);
}

void KvbString::append(const char* bytes, unsigned length, bool* failed) noexcept {
  if (length == 0) return;
  unsigned before = static_cast<unsigned>(this->length());
  const char* own = asCstr();
  bool isOwn = std::less_equal<>()(own, bytes) && std::less<>()(bytes, own + before);
  if (length > maximumLength - before || !reserve(before + length)) {
    if (failed) *failed = true;
    return;
  }
  // Bytes of this string have moved with it.
  const char* source = isOwn ? text_->bytes() + (bytes - own) : bytes;
  std::memcpy(text_->bytes() + before, source, length);
  text_->length = before + length;
  text_->bytes()[text_->length] = '\0';
}

int KvbString::length() const noexcept { return text_ ? static_cast<int>(text_->length) : 0; }

const char* KvbString::asCstr() const noexcept { return text_ ? text_->bytes() : ""; }

int KvbString::compare(const KvbString& other, bool caseSensitive) const noexcept {
  return text_ == other.text_ ? 0 : compareViews(viewOf(*this), viewOf(other), caseSensitive);
}

int KvbString::compare(const char* other, bool caseSensitive) const noexcept {
  return compareViews(viewOf(*this), other ? other : "", caseSensitive);
}

int KvbString::find(const KvbString& what, int from) const noexcept {
  return positionOf(viewOf(*this).find(viewOf(what), static_cast<std::size_t>(std::max(from, 0))));
}

int KvbString::rfind(const KvbString& what) const noexcept { return positionOf(viewOf(*this).rfind(viewOf(what))); }

KvbString KvbString::mid(unsigned start, int count) const {
  unsigned size = static_cast<unsigned>(length());
  unsigned first = std::min(start, size);
  unsigned kept = count < 0 ? size - first : std::min(static_cast<unsigned>(count), size - first);
  return kept == size && text_ ? *this : KvbString(asCstr() + first, kept);
}

KvbString KvbString::right(int count) const {
  int kept = std::clamp(count, 0, length());
  return mid(static_cast<unsigned>(length() - kept), kept);
}

void KvbString::replace(const KvbString& what, const KvbString& with, unsigned from, int count) {
  if (what.length() == 0) return;
  std::string_view text = viewOf(*this);
  KvbString result("", 0u);
  bool failed = false;
  std::size_t copied = 0;
  // A count of -1 becomes more than any text has occurrences.
  for (unsigned left = static_cast<unsigned>(count); left != 0; --left) {
    std::size_t found = text.find(viewOf(what), std::max<std::size_t>(from, copied));
    if (found == std::string_view::npos) break;
    result.append(text.data() + copied, static_cast<unsigned>(found - copied), &failed);
    result.append(with, &failed);
    copied = found + viewOf(what).size();
  }
  if (copied == 0) return;
  result.append(text.data() + copied, static_cast<unsigned>(text.size() - copied), &failed);
  if (failed) throw std::bad_alloc();
  *this = std::move(result);
}

void KvbString::trim(bool left, bool right) {
  std::string_view kept = trimmed(viewOf(*this), left, right);
  if (kept.size() != viewOf(*this).size()) adopt(kept.data(), static_cast<unsigned>(kept.size()));
}

void KvbString::truncate(unsigned length) {
  if (length < viewOf(*this).size()) adopt(asCstr(), length);
}

int KvbString::asInt(bool* failed) const noexcept {
  int value = 0;
  if (parseInt(trimmed(viewOf(*this), true, true), &value)) return value;
  if (failed) *failed = true;
  return 0;
}

void KvbString::setNull() noexcept {
  if (text_) releaseText();
  text_ = nullptr;
}

/** Gives up this string's share of the block; `text_` is stale afterwards. */
void KvbString::releaseText() noexcept {
  if (!text_->isCounted()) return;
  // The only owner needs no atomic subtraction.
  bool isLast =
      text_->count.load(std::memory_order_acquire) == 1 || text_->count.fetch_sub(1, std::memory_order_acq_rel) == 1;
  if (isLast) ::operator delete(text_);
}

bool KvbString::isExclusive() const noexcept {
  return text_ && text_->isCounted() && text_->count.load(std::memory_order_acquire) == 1;
}

/** Makes the block this string's own, with room for `capacity` bytes; a bigger one at least doubles. */
bool KvbString::reserve(unsigned capacity) noexcept {
  if (isExclusive() && capacity <= text_->capacity) return true;
  std::size_t doubled = std::min(2 * viewOf(*this).size(), maximumLength);
  Text* text = Text::create(std::max({static_cast<std::size_t>(capacity), doubled, leastGrowth}));
  if (!text) return false;
  text->put(asCstr(), static_cast<unsigned>(length()));
  if (text_) releaseText();
  text_ = text;
  return true;
}

/** Replaces the contents by the bytes, which may lie inside this string. */
void KvbString::adopt(const char* bytes, unsigned length) {
  if (isExclusive() && length <= text_->capacity) {
    text_->put(bytes, length);
    return;
  }
  Text* text = Text::copyOf(bytes, length);
  if (text_) releaseText();
  text_ = text;
}

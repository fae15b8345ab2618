// The text type of every interface of the XDM family, and printf-style formatting into it.
// Tested by tests/unit/kvbstring_test.cpp.
#ifndef KVXBASE_KVBSTRING_H
#define KVXBASE_KVBSTRING_H

#include <cstdarg>

#include <kvxbase/kvxbase_export.h>

/** Data type of a column: 0 none, 2 integer, 3 floating-point number, 4 character string, 5 date and time. */
typedef int kvbType;

/**
 * A text of 8-bit characters, used as a value.
 *
 * The text is opaque bytes followed by a NUL; lengths and positions count bytes from 0. Besides empty
 * there is a null state: null and empty compare equal, both have length 0 and the C text "", and only
 * isNull() tells them apart.
 *
 * Size: one pointer, now and in every later release. A string is a handle to a shared, counted text;
 * hosts never see the layout of that text.
 *
 * Copying never allocates and never fails. A change to a shared text makes its own copy first.
 *
 * Exhausted memory: an append with a failure flag reports there and leaves the text as it was. Every
 * other operation that needs memory throws std::bad_alloc and leaves the text as it was, as
 * std::string does. Operations marked noexcept need none.
 *
 * Threads: different strings may be used from different threads, even when they share a text (the counts
 * are atomic). One string is used by one thread at a time.
 */
class KVXBASE_API KvbString {
 public:
  /** A null string. */
  KvbString() noexcept : text_(nullptr) {}

  /** Holds a copy of `text`; a null pointer makes a null string. The flag is kept for compatibility and ignored. */
  KvbString(const char* text, bool flag);

  /** Holds a copy of the `length` bytes at `bytes`. */
  KvbString(const char* bytes, unsigned length);

  KvbString(const KvbString& other) noexcept;                                            ///< Shares the text.
  KvbString(KvbString&& other) noexcept : text_(other.text_) { other.text_ = nullptr; }  ///< `other` becomes null.
  KvbString& operator=(const KvbString& other) noexcept;                                 ///< Shares the text.
  KvbString& operator=(KvbString&& other) noexcept;  ///< `other` becomes null, unless it is this string.
  ~KvbString() {
    if (text_) releaseText();
  }

  /** Replaces the contents by `text`; a null pointer makes the string null. */
  void assign(const char* text);

  /** Replaces the contents by the decimal form of `number`. */
  void assign(int number);

  /**
   * Appends `text`. With `failed` given, exhausted memory sets `*failed` to true and leaves the string as it was;
   * `*failed` is never set to false, so one flag collects the failures of a run of appends. With a null `failed`
   * exhausted memory leaves the string as it was, unreported.
   */
  void append(const KvbString& text, bool* failed) noexcept;

  /** The same for a C text; a null pointer appends nothing. */
  void append(const char* text, bool* failed) noexcept;

  /** The same for the `length` bytes at `bytes`, which may lie inside this string. */
  void append(const char* bytes, unsigned length, bool* failed) noexcept;

  /** The number of bytes; 0 for null and empty. */
  int length() const noexcept;

  /** The NUL-terminated text, never null; valid until the string is changed or destroyed. */
  const char* asCstr() const noexcept;

  /**
   * Negative, zero or positive as this text orders before, equal to or after `other`, byte by byte. With
   * `caseSensitive` false the ASCII letters A to Z count as a to z, whatever the locale.
   */
  int compare(const KvbString& other, bool caseSensitive) const noexcept;

  /** The same against a C text; a null pointer counts as empty. */
  int compare(const char* other, bool caseSensitive) const noexcept;

  /** Position of the first occurrence of `what` at or after `from`, or -1; -1 also when `from` lies past the end. */
  int find(const KvbString& what, int from) const noexcept;

  /** Position of the last occurrence of `what`, or -1. */
  int rfind(const KvbString& what) const noexcept;

  /** `count` bytes from `start`, clipped to the end; empty when `start` is past the end; a negative count means the
   * rest. */
  KvbString mid(unsigned start, int count) const;

  /** The last `count` bytes: empty for 0 or less, the whole text for a count beyond the length. */
  KvbString right(int count) const;

  /**
   * Replaces the first `count` occurrences of `what` at or after `from` by `with`; -1 means all of them. Replaced text
   * is not searched again. An empty `what` changes nothing.
   */
  void replace(const KvbString& what, const KvbString& with, unsigned from, int count);

  /** Removes white space (blank, tab, line feed, carriage return, form feed, vertical tab) at the chosen ends. */
  void trim(bool left, bool right);

  /** Keeps the first `length` bytes; truncate(0) makes the string empty. A null string stays null. */
  void truncate(unsigned length);

  /**
   * The number that the text spells: white space at both ends, one sign, decimal digits, within 32 bits. For any other
   * text the result is 0 and `*failed` becomes true; on success `*failed` is left as it was. A null `failed` is
   * allowed.
   */
  int asInt(bool* failed) const noexcept;

  /** Makes the string null. */
  void setNull() noexcept;

  /** Whether the string is null; an empty string is not. */
  bool isNull() const noexcept { return text_ == nullptr; }

 private:
  struct Text;

  void releaseText() noexcept;
  bool isExclusive() const noexcept;
  bool reserve(unsigned capacity) noexcept;
  void adopt(const char* bytes, unsigned length);

  Text* text_;
};

static_assert(sizeof(KvbString) == sizeof(void*), "KvbString is one pointer wide");

/** Strict ordering of strings, byte by byte: the key order of every name map. */
struct KvbStringLess {
  /** Whether `left` orders before `right`. */
  bool operator()(const KvbString& left, const KvbString& right) const noexcept {
    return left.compare(right, true) < 0;
  }
};

/**
 * The text of `format`, a printf format, with the following arguments put in.
 * Returns a null string when memory is exhausted or the format is invalid; never throws. Safe from any thread.
 */
KVXBASE_API KvbString kvbStringFormat(const char* format, ...) noexcept __attribute__((format(printf, 1, 2)));

/** The same with the arguments as a list, for services that take a format and arguments themselves. */
KVXBASE_API KvbString kvbStringFormatList(const char* format, va_list arguments) noexcept
    __attribute__((format(printf, 1, 0)));

#endif

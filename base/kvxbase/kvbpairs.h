// Reads name=value pairs: the one syntax behind attribute strings and KVX_OPTIONS.
// Tested by tests/unit/kvbparse_test.cpp and tests/unit/kvboptions_test.cpp.
#ifndef KVXBASE_KVBPAIRS_H
#define KVXBASE_KVBPAIRS_H

#include <cstddef>
#include <string_view>

/** Goes through a text pair by pair. The views point into the text. */
class KvbPairReader {
 public:
  enum class Names { needValue, mayStandAlone };

  /** `separator` 0 stands for white space. A text of blanks only has no pairs, even where a blank is the separator. */
  KvbPairReader(std::string_view text, char separator, Names names) noexcept;

  /** Goes to the next pair; false at the end of the text and at the first fault. */
  bool next() noexcept;

  std::string_view name() const noexcept { return name_; }
  std::string_view value() const noexcept { return value_; }

  /** What is wrong at position(); null without a fault. */
  const char* fault() const noexcept { return fault_; }
  std::size_t position() const noexcept { return position_; }

 private:
  bool readName() noexcept;
  bool readValue() noexcept;
  bool readQuoted() noexcept;
  bool readBare() noexcept;
  void skipBlanks() noexcept;
  bool fail(const char* fault, std::size_t position) noexcept;

  bool isAtEnd() const noexcept { return position_ == text_.size(); }
  bool isAtBlank() const noexcept;
  bool isAtSeparator() const noexcept;
  bool isAfterValue() const noexcept { return isAtEnd() || isAtSeparator(); }
  bool isAfterName() const noexcept { return isAfterValue() || text_[position_] == '='; }
  std::string_view taken(std::size_t start) const noexcept;

  std::string_view text_;
  char separator_;
  Names names_;
  std::size_t position_ = 0;
  bool pairMustFollow_ = false;
  std::string_view name_;
  std::string_view value_;
  const char* fault_ = nullptr;
};

#endif

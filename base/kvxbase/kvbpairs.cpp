// Reads name=value pairs: the one syntax behind attribute strings and KVX_OPTIONS.
// Tested by tests/unit/kvbparse_test.cpp and tests/unit/kvboptions_test.cpp.
#include <kvxbase/kvbpairs.h>

namespace {

constexpr std::string_view whiteSpace = " \t\n\r\f\v";

bool isWhite(char character) noexcept { return whiteSpace.find(character) != std::string_view::npos; }

bool isBlank(std::string_view text) noexcept { return text.find_first_not_of(whiteSpace) == std::string_view::npos; }

}  // namespace

KvbPairReader::KvbPairReader(std::string_view text, char separator, Names names) noexcept
    : text_(isBlank(text) ? std::string_view() : text), separator_(separator), names_(names) {}

bool KvbPairReader::next() noexcept {
  skipBlanks();
  if (isAtEnd() && !pairMustFollow_) return false;
  if (!readName() || !readValue()) return false;
  skipBlanks();
  pairMustFollow_ = separator_ != 0 && !isAtEnd();
  if (pairMustFollow_) ++position_;
  return true;
}

bool KvbPairReader::readName() noexcept {
  std::size_t start = position_;
  while (!isAfterName()) ++position_;
  name_ = taken(start);
  return !name_.empty() || fail("a name is missing", start);
}

bool KvbPairReader::readValue() noexcept {
  value_ = {};
  skipBlanks();
  if (isAtEnd() || text_[position_] != '=') {
    return names_ == Names::mayStandAlone || fail("\"=\" is missing", position_);
  }
  ++position_;
  skipBlanks();
  bool isQuoted = !isAtEnd() && (text_[position_] == '"' || text_[position_] == '\'');
  return isQuoted ? readQuoted() : readBare();
}

bool KvbPairReader::readQuoted() noexcept {
  std::size_t start = position_ + 1;
  std::size_t end = text_.find(text_[position_], start);
  if (end == std::string_view::npos) return fail("a quote is not closed", position_);
  value_ = text_.substr(start, end - start);
  position_ = end + 1;
  if (separator_ != 0) skipBlanks();
  return isAfterValue() || fail("text follows a closing quote", position_);
}

bool KvbPairReader::readBare() noexcept {
  std::size_t start = position_;
  while (!isAfterValue()) ++position_;
  value_ = taken(start);
  return !value_.empty() || fail("a value is missing", start);
}

void KvbPairReader::skipBlanks() noexcept {
  while (!isAtEnd() && isAtBlank()) ++position_;
}

bool KvbPairReader::fail(const char* fault, std::size_t position) noexcept {
  fault_ = fault;
  position_ = position;
  return false;
}

/** White space that separates pairs does not also count as a blank within one. */
bool KvbPairReader::isAtBlank() const noexcept { return isWhite(text_[position_]) && text_[position_] != separator_; }

bool KvbPairReader::isAtSeparator() const noexcept {
  return separator_ == 0 ? isWhite(text_[position_]) : text_[position_] == separator_;
}

/** What was passed since `start`, without the blanks at its end. */
std::string_view KvbPairReader::taken(std::size_t start) const noexcept {
  std::string_view text = text_.substr(start, position_ - start);
  return text.substr(0, text.find_last_not_of(whiteSpace) + 1);
}

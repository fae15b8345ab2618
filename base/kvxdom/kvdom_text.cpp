// What counts as a name and as character data in XML.
// Tested by tests/unit/kvdom_write_test.cpp.
#include <kvxdom/kvdom_text.h>

#include <algorithm>
#include <array>

namespace {

/** The length that the first byte of a character announces; 0 for a byte that begins none. */
std::size_t announcedLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first < 0xC2) return 0;
  if (first < 0xE0) return 2;
  if (first < 0xF0) return 3;
  return first < 0xF5 ? 4 : 0;
}

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

/** REQUIRES: a first byte and the continuation bytes that it announces. */
char32_t decode(std::string_view sequence) {
  auto first = static_cast<unsigned char>(sequence[0]);
  char32_t character = sequence.size() == 1 ? first : first & (0x7Fu >> sequence.size());
  for (char byte : sequence.substr(1)) character = character << 6 | (static_cast<unsigned char>(byte) & 0x3F);
  return character;
}

bool isOverlong(char32_t character, std::size_t length) {
  return (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
}

bool isAllowed(char32_t character) {
  if (character < 0x20) return character == '\t' || character == '\n' || character == '\r';
  if (character >= 0xD800 && character <= 0xDFFF) return false;
  return character != 0xFFFE && character != 0xFFFF && character <= 0x10FFFF;
}

/** The length of the allowed character at the start of `text`; 0 when there is none. */
std::size_t allowedLength(std::string_view text) {
  if (text[0] >= ' ') return 1;  // nearly all are ASCII; the bytes of other characters are negative
  std::size_t length = announcedLength(static_cast<unsigned char>(text[0]));
  if (length == 0 || length > text.size()) return 0;
  std::string_view sequence = text.substr(0, length);
  if (!std::all_of(sequence.begin() + 1, sequence.end(), isContinuation)) return 0;
  char32_t character = decode(sequence);
  return isAllowed(character) && !isOverlong(character, length) ? length : 0;
}

constexpr bool isNameStart(unsigned char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte == '_' || byte == ':' || byte >= 0x80;
}

constexpr std::array<bool, 256> tableOfNameBytes() {
  std::array<bool, 256> table{};
  for (unsigned byte = 0; byte < table.size(); ++byte) {
    table[byte] =
        isNameStart(static_cast<unsigned char>(byte)) || (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
  }
  return table;
}

constexpr std::array<bool, 256> nameBytes = tableOfNameBytes();

bool isNameByte(unsigned char byte) { return nameBytes[byte]; }

}  // namespace

bool kvdomIsText(std::string_view text) noexcept {
  while (!text.empty()) {
    std::size_t length = allowedLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

bool kvdomIsName(std::string_view text) noexcept {
  return !text.empty() && isNameStart(static_cast<unsigned char>(text[0])) &&
         std::all_of(text.begin(), text.end(), isNameByte) && kvdomIsText(text);
}

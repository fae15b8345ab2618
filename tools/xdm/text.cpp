#include "text.h"

#include <algorithm>
#include <climits>
#include <new>

namespace {

struct Character {
  char32_t code;
  std::size_t length;  // 0 for bytes that are not UTF-8
};

bool isContinuation(char byte) { return (byte & 0xC0) == 0x80; }

std::size_t lengthByLead(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead < 0xE0) return 2;
  if (lead >= 0xE0 && lead < 0xF0) return 3;
  if (lead >= 0xF0 && lead < 0xF5) return 4;
  return 0;
}

bool isAllowedCode(char32_t code, std::size_t length) {
  constexpr char32_t shortest[] = {0, 0, 0x80, 0x800, 0x10000};
  return code >= shortest[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

Character characterAt(std::string_view text, std::size_t position) {
  unsigned char lead = static_cast<unsigned char>(text[position]);
  std::size_t length = lengthByLead(lead);
  if (length == 0 || position + length > text.size()) return {0, 0};
  char32_t code = length == 1 ? lead : lead & (0x7F >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[position + i])) return {0, 0};
    code = code << 6 | (static_cast<unsigned char>(text[position + i]) & 0x3F);
  }
  return {code, isAllowedCode(code, length) ? length : 0};
}

bool isForbidden(char32_t code) {
  if (code < 0x20) return code != '\t' && code != '\n' && code != '\r';
  return code == 0xFFFE || code == 0xFFFF;
}

}  // namespace

std::string toStd(const KvbString& text) { return {text.asCstr(), static_cast<std::size_t>(text.length())}; }

KvbString toKvb(std::string_view text) {
  if (text.size() > INT_MAX) throw std::bad_alloc();
  return {text.data(), static_cast<unsigned>(text.size())};
}

std::string escapeXml(std::string_view text) {
  std::string escaped;
  for (char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\r':
        escaped += "&#13;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::optional<std::size_t> findNonUtf8(std::string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    Character character = characterAt(text, position);
    if (character.length == 0) return position;
    position += character.length;
  }
  return std::nullopt;
}

std::optional<char32_t> findForbidden(std::string_view text) {
  for (std::size_t position = 0; position < text.size();) {
    Character character = characterAt(text, position);
    if (isForbidden(character.code)) return character.code;
    position += character.length;
  }
  return std::nullopt;
}

std::size_t characters(std::string_view text) {
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isContinuation));
}

std::string replaced(std::string text, std::string_view what, std::string_view with) {
  for (std::size_t at = 0; !what.empty() && (at = text.find(what, at)) != std::string::npos; at += with.size()) {
    text.replace(at, what.size(), with);
  }
  return text;
}

std::string_view localName(std::string_view name) { return name.substr(name.find(':') + 1); }

// What counts as a name and as character data in XML.
// Tested by tests/unit/kvdom_write_test.cpp.
#ifndef KVXDOM_KVDOM_TEXT_H
#define KVXDOM_KVDOM_TEXT_H

#include <kvxbase/kvbstring.h>

#include <string_view>

inline std::string_view kvdomView(const KvbString& text) {
  return {text.asCstr(), static_cast<std::size_t>(text.length())};
}

/** Whether `text` is well-formed UTF-8 and holds only characters that XML 1.0 allows. */
bool kvdomIsText(std::string_view text) noexcept;

/** Whether `text` is an element or attribute name. Beyond ASCII every character is taken for a name character. */
bool kvdomIsName(std::string_view text) noexcept;

#endif

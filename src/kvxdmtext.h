// Small helpers that every source unit of the library uses: views of texts and catalogue messages.
#ifndef KVXDM_SRC_KVXDMTEXT_H
#define KVXDM_SRC_KVXDMTEXT_H

#include <cstddef>
#include <string_view>

#include <kvxbase/kvbmessage.h>
#include <kvxbase/kvbstring.h>

/** The text of `string` without a copy; valid until the string is changed or destroyed. */
inline std::string_view view(const KvbString& string) noexcept {
  return {string.asCstr(), static_cast<std::size_t>(string.length())};
}

/** A string that holds `text`. Throws std::bad_alloc on exhausted memory. */
inline KvbString toString(std::string_view text) { return KvbString(text.data(), static_cast<unsigned>(text.size())); }

/** The same without throwing: null when memory is exhausted. */
inline KvbString tryToString(std::string_view text) noexcept {
  KvbString string;
  string.append(text.data(), static_cast<unsigned>(text.size()), nullptr);
  return string;
}

inline bool isEmpty(const KvbString& string) noexcept { return string.length() == 0; }

inline const char* messageArgument(const char* text) noexcept { return text; }
inline const char* messageArgument(const KvbString& text) noexcept { return text.asCstr(); }

/** Catalogue message `number` of the library, reported at `line` of `sourceUnit`. Null when memory is exhausted. */
template <class... Arguments>
KvbString message(const char* sourceUnit, int line, int number, const Arguments&... arguments) noexcept {
  return kvb_get_message(sourceUnit, line, "XML Data Model", number, messageArgument(arguments)...,
                         static_cast<const char*>(nullptr));
}

#endif

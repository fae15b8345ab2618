// Short ways between KvbString and the standard strings, and catalogue messages to compare with.
#ifndef KVXDM_TESTS_TEXTS_H
#define KVXDM_TESTS_TEXTS_H

#include <kvxbase/kvbmessage.h>
#include <kvxbase/kvbstring.h>

#include <string>
#include <string_view>

inline KvbString kv(std::string_view text) { return KvbString(text.data(), static_cast<unsigned>(text.size())); }

inline std::string str(const KvbString& text) {
  return std::string(text.asCstr(), static_cast<std::size_t>(text.length()));
}

inline std::string str(std::string_view text) { return std::string(text); }

/** Catalogue message `number` of the library with `arguments`, which are C texts. */
template <class... Arguments>
std::string catalogue(int number, const Arguments*... arguments) {
  return str(kvb_get_message("test", 0, "XML Data Model", number, arguments..., static_cast<const char*>(nullptr)));
}

#endif

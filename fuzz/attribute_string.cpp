// Parses the input as an attribute string, with its first byte as the separator, and as the text of KVX_OPTIONS.
#include <gtest/gtest.h>
#include <kvxbase/kvboptions.h>
#include <kvxbase/kvbparse.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "input.h"
#include "texts.h"

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

Pairs pairsOf(const KvbParse& parser) {
  Pairs pairs;
  KvbString name, value;
  for (int i = 0; parser.getAttribute(i, &name, &value); ++i) pairs.emplace_back(str(name), str(value));
  return pairs;
}

/** The value as it can be written: in quotes that it does not hold; one that holds both kinds was written bare. */
std::string quoted(const std::string& value) {
  if (value.find('"') == std::string::npos) return '"' + value + '"';
  if (value.find('\'') == std::string::npos) return '\'' + value + '\'';
  return value;
}

std::string written(const Pairs& pairs, char separator) {
  std::string text;
  for (const auto& [name, value] : pairs) {
    if (!text.empty()) text += separator == '\0' ? ' ' : separator;
    text += name + '=' + quoted(value);
  }
  return text;
}

/** A separator that is part of the syntax itself hides what it separates. */
bool canBeWritten(char separator) { return separator != '=' && separator != '"' && separator != '\''; }

void parse(const std::string& text, char separator) {
  KvbParse parser;
  if (!parser.parse(kv(text), separator)) {
    EXPECT_GT(parser.getErrorMessage().length(), 0);
    EXPECT_EQ(parser.getAttributeCount(), 0);
    return;
  }
  EXPECT_EQ(parser.getErrorMessage().length(), 0);
  const Pairs pairs = pairsOf(parser);
  EXPECT_EQ(static_cast<int>(pairs.size()), parser.getAttributeCount());
  if (!canBeWritten(separator)) return;
  EXPECT_TRUE(parser.parse(kv(written(pairs, separator)), separator)) << str(parser.getErrorMessage());
  EXPECT_EQ(pairsOf(parser), pairs);
}

/** Makes `text` the value of KVX_OPTIONS, in one place: setenv would keep every text that it was ever given. */
void setOptions(const std::string& text) {
  static std::array<char, 1 << 16> variable = {"KVX_OPTIONS="};
  static const std::size_t start = std::string_view(variable.data()).size();
  const std::size_t length = std::min(text.size(), variable.size() - start - 1);
  *std::copy_n(text.begin(), length, variable.begin() + static_cast<std::ptrdiff_t>(start)) = '\0';
  putenv(variable.data());
}

/** Whatever parses as pairs says the same as the options; of a name the first one counts. */
void lookUpOptions(const std::string& text) {
  setOptions(text);
  const KvbConfigOptions* options = kvbGetConfigOptions(KvbString());
  KvbParse parser;
  if (!parser.parse(kv(text), 0)) return;
  EXPECT_EQ(options == nullptr, parser.getAttributeCount() == 0);
  std::map<std::string, std::string> first;
  for (const auto& pair : pairsOf(parser)) first.insert(pair);
  for (const auto& [name, value] : first) {
    KvbString found;
    EXPECT_TRUE(options->lookup(kv(name), &found, 0)) << name;
    EXPECT_EQ(str(found), value);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const char separator = static_cast<char>(input.byte());
  const std::string text(input.rest());
  parse(text, separator);
  parse(text, 0);
  lookUpOptions(text.c_str());
  return 0;
}

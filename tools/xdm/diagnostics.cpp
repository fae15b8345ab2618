#include "diagnostics.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

std::vector<std::string>& warnings() {
  static std::vector<std::string> kept;
  return kept;
}

bool isSilent = false;

void print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }

bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

}  // namespace

void warn(const std::string& text) {
  if (std::find(warnings().begin(), warnings().end(), text) == warnings().end()) warnings().push_back(text);
}

void silenceWarnings() { isSilent = true; }

void printWarnings() {
  if (isSilent) return;
  for (const std::string& text : warnings()) {
    print("xdm: warning: ");
    print(text);
    print("\n");
  }
}

void printError(std::string_view message, std::string_view details) {
  print("xdm: error: ");
  for (char c : message) std::fputc(isLineEnd(c) ? ' ' : c, stderr);
  print("\n");
  print(details);
  if (!details.empty() && details.back() != '\n') print("\n");
}

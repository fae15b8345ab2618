// Configuration options: what the host has set, then what KVX_OPTIONS holds.
// Tested by tests/unit/kvboptions_test.cpp.
#include <kvxbase/kvboptions.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>

#include <kvxbase/kvbpairs.h>

namespace {

using Options = std::map<KvbString, KvbString, KvbStringLess>;

constinit std::mutex guard;
constinit Options* hostOptions = nullptr;  // never freed: options may be asked for while the process ends

/** The options in the environment. What stands before a fault in the text counts, the rest does not. */
KvbPairReader environmentOptions() noexcept {
  const char* text = std::getenv("KVX_OPTIONS");
  return KvbPairReader(text ? text : "", 0, KvbPairReader::Names::mayStandAlone);
}

bool findHostOption(const KvbString& name, KvbString* value) noexcept {
  std::lock_guard<std::mutex> lock(guard);
  if (!hostOptions) return false;
  auto found = hostOptions->find(name);
  if (found == hostOptions->end()) return false;
  if (value) *value = found->second;
  return true;
}

bool findEnvironmentOption(const KvbString& name, KvbString* value) {
  KvbPairReader reader = environmentOptions();
  std::string_view wanted(name.asCstr(), static_cast<std::size_t>(name.length()));
  while (reader.next()) {
    if (reader.name() != wanted) continue;
    if (value) *value = KvbString(reader.value().data(), static_cast<unsigned>(reader.value().size()));
    return true;
  }
  return false;
}

bool hasHostOptions() noexcept {
  std::lock_guard<std::mutex> lock(guard);
  return hostOptions && !hostOptions->empty();
}

}  // namespace

bool KvbConfigOptions::lookup(const KvbString& name, KvbString* value, int) const {
  return findHostOption(name, value) || findEnvironmentOption(name, value);
}

const KvbConfigOptions* kvbGetConfigOptions(const KvbString&) noexcept {
  static constexpr KvbConfigOptions options;
  return hasHostOptions() || environmentOptions().next() ? &options : nullptr;
}

void kvbSetConfigOption(const KvbString& name, const KvbString& value) {
  std::lock_guard<std::mutex> lock(guard);
  if (!hostOptions) hostOptions = new Options;
  (*hostOptions)[name] = value;
}

void kvbClearConfigOptions() noexcept {
  std::lock_guard<std::mutex> lock(guard);
  if (hostOptions) hostOptions->clear();
}

// Loggers by category, silent unless asked for.
// Tested by tests/unit/kvlogger_test.cpp.
#include <kvxlog/kvlogger.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>

#include <kvxbase/kvbmessage.h>
#include <kvxbase/kvbstring.h>

/** The loggers made so far: a list that only grows and is never freed, since hosts keep the pointers. */
struct KvLoggerRegistry {
  struct Entry {
    KvLogger_ logger;
    Entry* next;
  };

  static KvLogger_* find(const char* category) noexcept;
  static KvLogger_* add(const char* category) noexcept;

  static constinit std::mutex guard;
  static constinit Entry* first;
};

constinit std::mutex KvLoggerRegistry::guard;
constinit KvLoggerRegistry::Entry* KvLoggerRegistry::first = nullptr;

KvLogger_* KvLoggerRegistry::find(const char* category) noexcept {
  for (Entry* entry = first; entry; entry = entry->next) {
    if (std::strcmp(entry->logger.category_, category) == 0) return &entry->logger;
  }
  return nullptr;
}

KvLogger_* KvLoggerRegistry::add(const char* category) noexcept {
  std::size_t size = std::strlen(category) + 1;
  char* copy = new (std::nothrow) char[size];
  if (!copy) return nullptr;
  std::memcpy(copy, category, size);
  Entry* entry = new (std::nothrow) Entry{KvLogger_(copy), first};
  if (!entry) {
    delete[] copy;
    return nullptr;
  }
  first = entry;
  return &entry->logger;
}

KvLogger_* kvlogGetLogger(const char* category) noexcept {
  const char* name = category ? category : "";
  std::lock_guard<std::mutex> lock(KvLoggerRegistry::guard);
  KvLogger_* logger = KvLoggerRegistry::find(name);
  return logger ? logger : KvLoggerRegistry::add(name);
}

namespace {

// Thresholds outside the levels: no event is that high, and KVX_LOG was not looked at yet.
constexpr long long silent = LLONG_MAX;
constexpr long long unread = LLONG_MIN;

/** Where events go. The threshold is also read without the lock, so that a silent event costs next to nothing. */
struct Target {
  std::mutex guard;
  KvLogSink sink = nullptr;
  void* context = nullptr;
  std::atomic<long long> threshold = unread;
};

constinit Target target;

/** One write for the whole line; an event for which there is no memory is dropped. */
void printEvent(const KvLogEvent& event, void*) noexcept {
  try {
    std::string line = std::string(event.category) + " [" + std::to_string(event.level) + "] " + event.sourceUnit +
                       ":" + std::to_string(event.line) + ": " + event.text;
    std::replace_if(
        line.begin(), line.end(), [](char character) { return character == '\n' || character == '\r'; }, ' ');
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
  } catch (const std::bad_alloc&) {
    return;
  }
}

long long environmentThreshold() noexcept {
  const char* text = std::getenv("KVX_LOG");
  if (!text) return silent;
  KvbString level;
  bool failed = false;
  level.append(text, &failed);
  long long threshold = level.asInt(&failed);
  return failed ? silent : threshold;
}

void useEnvironment() noexcept {
  target.sink = printEvent;
  target.context = nullptr;
  target.threshold = environmentThreshold();
}

bool isEnabled(KvLoggingLevel level) noexcept {
  if (target.threshold == unread) {
    std::lock_guard<std::mutex> lock(target.guard);
    if (target.threshold == unread) useEnvironment();
  }
  return level >= target.threshold;
}

void deliver(const KvLogEvent& event) noexcept {
  std::lock_guard<std::mutex> lock(target.guard);
  // The sink may be another one since the event was found to be enabled.
  if (event.text && event.level >= target.threshold) target.sink(event, target.context);
}

/** Takes the pointer as data: a null `this` must reach the comparison. */
bool accepts(const void* logger, KvLoggingLevel level) noexcept { return logger && isEnabled(level); }

const char* textOrNull(const KvbString& text) noexcept { return text.isNull() ? nullptr : text.asCstr(); }

}  // namespace

__attribute__((no_sanitize("null"))) void KvLogger_::logEvent(KvLoggingLevel level, const char* sourceUnit, int line,
                                                              const char* format, ...) noexcept {
  if (!accepts(this, level)) return;
  va_list arguments;
  va_start(arguments, format);
  KvbString text = kvbStringFormatList(format, arguments);
  va_end(arguments);
  deliver({category_, level, sourceUnit, line, textOrNull(text)});
}

__attribute__((no_sanitize("null"))) void KvLogger_::logEvent(KvLoggingLevel level, const char* sourceUnit, int line,
                                                              int number, ...) noexcept {
  if (!accepts(this, level)) return;
  va_list arguments;
  va_start(arguments, number);
  KvbString text = kvb_get_message_list(sourceUnit, line, "XML Data Model", number, arguments);
  va_end(arguments);
  deliver({category_, level, sourceUnit, line, textOrNull(text)});
}

void kvlogSetSink(KvLogSink sink, void* context, KvLoggingLevel level) noexcept {
  std::lock_guard<std::mutex> lock(target.guard);
  if (!sink) {
    useEnvironment();
    return;
  }
  target.sink = sink;
  target.context = context;
  target.threshold = level;
}

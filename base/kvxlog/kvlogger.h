// Loggers by category, silent unless asked for.
// Tested by tests/unit/kvlogger_test.cpp.
#ifndef KVXLOG_KVLOGGER_H
#define KVXLOG_KVLOGGER_H

#include <kvxlog/kvxlog_export.h>

/** Level of a log event; the library uses 2 for information and 5 for errors. */
typedef int KvLoggingLevel;

/** One event, as a sink receives it. The texts are valid during the call only. */
struct KvLogEvent {
  const char* category;    ///< of the logger: "KV.XDM" for the library's own
  KvLoggingLevel level;    ///< as given to the logger
  const char* sourceUnit;  ///< the source that logs, for tracing
  int line;                ///< the line of that source
  const char* text;        ///< what to show
};

/** Receives events. It is called from the thread that logs, one call at a time, must not throw and must not log. */
typedef void (*KvLogSink)(const KvLogEvent& event, void* context);

/**
 * A logger of one category. Loggers are never freed. Safe from any thread; never throws.
 *
 * Without a sink events are dropped, unless the environment variable KVX_LOG holds a level: then events of that level
 * and above go to standard error, one line each. KVX_LOG is read at the first event and when kvlogSetSink takes the
 * sink back. When memory is exhausted an event is dropped.
 */
class KVXLOG_API KvLogger_ {
 public:
  /** Logs the text of `format` (printf) with its arguments. Does nothing on a null logger. */
  void logEvent(KvLoggingLevel level, const char* sourceUnit, int line, const char* format, ...) noexcept
      __attribute__((format(printf, 5, 6)));

  /**
   * Logs catalogue message `number` with its arguments: `const char*` texts closed by a null pointer
   * (`static_cast<const char*>(nullptr)`). Does nothing on a null logger.
   */
  void logEvent(KvLoggingLevel level, const char* sourceUnit, int line, int number, ...) noexcept
      __attribute__((sentinel));

 private:
  friend struct KvLoggerRegistry;
  explicit KvLogger_(const char* category) noexcept : category_(category) {}

  const char* category_;
};

/**
 * The logger of `category`, the same object at every call; null when memory is exhausted.
 * It lives as long as the process. Safe from any thread; never throws.
 */
KVXLOG_API KvLogger_* kvlogGetLogger(const char* category) noexcept;

/**
 * Sends events of `level` and above to `sink` from now on, with `context` handed through; KVX_LOG no longer counts.
 * A null sink goes back to the environment. Safe from any thread; when it returns, the sink before is no longer called.
 */
KVXLOG_API void kvlogSetSink(KvLogSink sink, void* context, KvLoggingLevel level) noexcept;

#endif

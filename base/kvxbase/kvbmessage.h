// The message catalogue: every numbered text that the library can report.
// Tested by tests/unit/kvbmessage_test.cpp.
#ifndef KVXBASE_KVBMESSAGE_H
#define KVXBASE_KVBMESSAGE_H

#include <cstdarg>

#include <kvxbase/kvbstring.h>

/**
 * The text of catalogue message `number`: "XDM<number>: <text>", with every argument shown in it, quoted.
 *
 * The arguments after `number` are `const char*` texts, closed by a null pointer
 * (`static_cast<const char*>(nullptr)`). An argument that the message has and the caller leaves out (the second one of
 * 1450) is not shown. An unknown number gives a text with the number and all the arguments.
 *
 * `sourceUnit` and `line` name the place that reports; `component` is always "XML Data Model". They identify the
 * caller for tracing and do not appear in the text.
 *
 * Returns a null string when memory is exhausted; never throws. Safe from any thread.
 */
KVXBASE_API KvbString kvb_get_message(const char* sourceUnit, int line, const char* component, int number, ...) noexcept
    __attribute__((sentinel));

/** The same with the arguments as a list, for services that take a message number and arguments themselves. */
KVXBASE_API KvbString kvb_get_message_list(const char* sourceUnit, int line, const char* component, int number,
                                           va_list arguments) noexcept;

/** The number of messages in the catalogue. */
KVXBASE_API int kvb_message_count() noexcept;

/** The number of the message at `index` of the catalogue, in ascending order, or 0 out of range. */
KVXBASE_API int kvb_message_number(int index) noexcept;

#endif

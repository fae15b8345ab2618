// Configuration options: from the environment variable KVX_OPTIONS and from the host.
// Tested by tests/unit/kvboptions_test.cpp.
#ifndef KVXBASE_KVBOPTIONS_H
#define KVXBASE_KVBOPTIONS_H

#include <kvxbase/kvbstring.h>

/**
 * The options of the process. An option is a name with a value; a name alone has an empty value.
 *
 * KVX_OPTIONS holds a blank-separated list of `name` or `name=value`; a value may stand in single or double quotes.
 * The syntax is that of KvbParse; what stands before a fault in the text counts, the rest does not. The first option
 * of a name counts. An option set by the host hides one of the same name in the environment. Names are case-sensitive.
 *
 * Safe from any thread. The environment is read at each look-up; a host that changes its environment while another
 * thread looks an option up breaks the rules of getenv.
 */
class KVXBASE_API KvbConfigOptions {
 public:
  /**
   * Whether option `name` is set; if so `*value` receives its value. `value` may be null. `reserved` is 0.
   * Throws std::bad_alloc on exhausted memory.
   */
  bool lookup(const KvbString& name, KvbString* value, int reserved) const;
};

/**
 * The options of the process, or null when there is none at all. `scope` is a null string; scopes are not used.
 * The object lives as long as the process; the caller does not free it. Safe from any thread.
 */
KVXBASE_API const KvbConfigOptions* kvbGetConfigOptions(const KvbString& scope) noexcept;

/** Sets option `name` for the process. Throws std::bad_alloc on exhausted memory. Safe from any thread. */
KVXBASE_API void kvbSetConfigOption(const KvbString& name, const KvbString& value);

/** Takes back every option set by kvbSetConfigOption; the environment stays. Safe from any thread. */
KVXBASE_API void kvbClearConfigOptions() noexcept;

#endif

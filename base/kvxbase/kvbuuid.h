// Unique identifiers.
// Tested by tests/unit/kvbuuid_test.cpp.
#ifndef KVXBASE_KVBUUID_H
#define KVXBASE_KVBUUID_H

#include <kvxbase/kvbstring.h>

/**
 * A new random (version 4) UUID in lower case with hyphens, from the kernel's random source.
 * Throws std::bad_alloc on exhausted memory. Safe from any thread.
 */
KVXBASE_API KvbString kvbGetUUID();

#endif

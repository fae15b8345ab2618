// A variant value that converts text to a number.
// Tested by tests/unit/kvbdatavar_test.cpp.
#include <kvxbase/kvbdatavar.h>

void KvbDatavar::assign(const KvbString& text) noexcept { text_ = text; }

int KvbDatavar::asInt(bool* failed) const noexcept { return text_.asInt(failed); }

// A variant value that converts text to a number.
// Tested by tests/unit/kvbdatavar_test.cpp.
#ifndef KVXBASE_KVBDATAVAR_H
#define KVXBASE_KVBDATAVAR_H

#include <kvxbase/kvbstring.h>

/** Holds a text and gives it as a number. One object is used by one thread at a time. */
class KVXBASE_API KvbDatavar {
 public:
  /** Holds `text` from now on. */
  void assign(const KvbString& text) noexcept;

  /** The number that the text spells; failure as for KvbString::asInt. */
  int asInt(bool* failed) const noexcept;

 private:
  KvbString text_;
};

#endif

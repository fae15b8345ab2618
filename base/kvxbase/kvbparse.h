// Attribute strings: name=value pairs in one text.
// Tested by tests/unit/kvbparse_test.cpp.
#ifndef KVXBASE_KVBPARSE_H
#define KVXBASE_KVBPARSE_H

#include <kvxbase/kvbstring.h>

/**
 * Parses an attribute string and holds its name=value pairs.
 *
 * Pairs are separated by white space (separator 0) or by the separator given. Blanks around "=" are allowed. A value is
 * bare (up to the next separator) or stands in single or double quotes; an empty quoted value is a value. Pairs keep
 * their order and duplicates are kept.
 *
 * One object is used by one thread at a time.
 */
class KVXBASE_API KvbParse {
 public:
  KvbParse() noexcept;
  ~KvbParse();
  KvbParse(const KvbParse&) = delete;
  KvbParse& operator=(const KvbParse&) = delete;

  /**
   * Parses `text`, replacing what was held. A text of blanks only parses to no pairs.
   * Returns false, with no pairs held and the reason in getErrorMessage(), for an empty name, a missing "=", a bare
   * empty value, an open quote, text right after a closing quote, or exhausted memory.
   */
  bool parse(const KvbString& text, char separator) noexcept;

  /** The number of pairs held. */
  int getAttributeCount() const noexcept;

  /** Fills `*name` and `*value` with pair `index`; returns false and changes neither when `index` is out of range. */
  bool getAttribute(int index, KvbString* name, KvbString* value) const noexcept;

  /** Why the last parse failed, with the position (bytes from 0) in the text; empty after a success. */
  KvbString getErrorMessage() const noexcept;

 private:
  struct Pairs;
  Pairs* pairs_;
  KvbString error_;
};

#endif

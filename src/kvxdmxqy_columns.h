// The selected columns by their XPaths.
// Tested by tests/unit/kvxdmxqy_columns_test.cpp.
#ifndef KVXDM_SRC_KVXDMXQY_COLUMNS_H
#define KVXDM_SRC_KVXDMXQY_COLUMNS_H

#include <cstddef>
#include <string_view>
#include <vector>

#include <kvxdm/kvxdm.h>

class XDMColumnImpl;

/**
 * A hash table of the columns of a list, by their places in it. List and XPaths must not change as long as columns are
 * looked up. The slots are small and lie together, since the table of many columns waits for memory at each.
 */
class ColumnsByXPath {
 public:
  explicit ColumnsByXPath(const XDMList& columns) noexcept : columns_(columns) {}

  /** Empties the table and makes room for so many columns. Throws std::bad_alloc. */
  void reset(int count);

  /** Enters the column at `index` of the list; one with the same XPath gives way. REQUIRES: there is room. */
  void enter(int index) noexcept;

  /** The column with that XPath, or null. */
  XDMColumnImpl* find(std::string_view xpath) const noexcept;

 private:
  struct Slot {
    unsigned hash = 0;
    int index = -1;  // none
  };

  static unsigned hashOf(std::string_view xpath) noexcept;
  XDMColumnImpl* columnAt(int index) const noexcept;
  /** Where the column with that XPath is or would be. */
  std::size_t slotFor(std::string_view xpath, unsigned hash) const noexcept;

  const XDMList& columns_;
  std::vector<Slot> slots_;  // a power of two of them, at least half of them free
};

#endif

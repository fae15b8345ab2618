// The selected columns by their XPaths.
// Tested by tests/unit/kvxdmxqy_columns_test.cpp.
#include "kvxdmxqy_columns.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "kvxdmcol.h"
#include "kvxdmtext.h"

void ColumnsByXPath::reset(int count) { slots_.assign(2 * std::bit_ceil(static_cast<std::size_t>(count) + 1), Slot()); }

void ColumnsByXPath::enter(int index) noexcept {
  const std::string_view xpath = view(columnAt(index)->xpath());
  const unsigned hash = hashOf(xpath);
  slots_[slotFor(xpath, hash)] = {hash, index};
}

XDMColumnImpl* ColumnsByXPath::find(std::string_view xpath) const noexcept {
  return slots_.empty() ? nullptr : columnAt(slots_[slotFor(xpath, hashOf(xpath))].index);
}

// The end of a path tells it from nearly every other, and a walk down a deep tree asks for every beginning of a path.
unsigned ColumnsByXPath::hashOf(std::string_view xpath) noexcept {
  constexpr std::size_t most = 128;
  const std::string_view end = xpath.substr(xpath.size() - std::min(xpath.size(), most));
  return static_cast<unsigned>(std::hash<std::string_view>()(end));
}

XDMColumnImpl* ColumnsByXPath::columnAt(int index) const noexcept {
  return static_cast<XDMColumnImpl*>(columns_.getItem(index));
}

std::size_t ColumnsByXPath::slotFor(std::string_view xpath, unsigned hash) const noexcept {
  const auto isOther = [&](const Slot& slot) {
    return slot.index >= 0 && (slot.hash != hash || view(columnAt(slot.index)->xpath()) != xpath);
  };
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = hash & mask;
  while (isOther(slots_[slot])) slot = (slot + 1) & mask;
  return slot;
}

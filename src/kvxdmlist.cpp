// The item list: an ordered array of pointers that it does not own.
// Tested by tests/unit/kvxdmlist_test.cpp.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <utility>

#include <kvxdm/kvxdm.h>

namespace {

constexpr int growthStep = 10;

}  // namespace

void* XDMList::getNextItem(void* item) const noexcept {
  if (!item) return getItem(0);
  int index = indexOf(item);
  return index < 0 ? nullptr : getItem(index + 1);
}

bool XDMList::appendItem(void* item) noexcept { return insertItemAt(count_, item); }

bool XDMList::insertItem(void* item, void* after) noexcept {
  int index = indexOf(after);
  return insertItemAt(index < 0 ? count_ : index + 1, item);
}

bool XDMList::insertItemAt(int index, void* item) noexcept {
  if (count_ == capacity_ && !grow()) return false;
  std::move_backward(items_ + index, items_ + count_, items_ + count_ + 1);
  items_[index] = item;
  ++count_;
  return true;
}

void* XDMList::removeItem(int index) noexcept {
  if (index < 0 || index >= count_) return nullptr;
  void* item = items_[index];
  std::move(items_ + index + 1, items_ + count_, items_ + index);
  --count_;
  items_[count_] = nullptr;
  return item;
}

void XDMList::removeItem(void* item) noexcept { removeItem(indexOf(item)); }

void XDMList::moveUp(void* item) noexcept {
  int index = indexOf(item);
  if (index > 0) std::swap(items_[index], items_[index - 1]);
}

void XDMList::moveDown(void* item) noexcept {
  int index = indexOf(item);
  if (index >= 0 && index + 1 < count_) std::swap(items_[index], items_[index + 1]);
}

void XDMList::release() noexcept {
  std::free(items_);
  items_ = nullptr;
  capacity_ = 0;
  count_ = 0;
}

int XDMList::indexOf(const void* item) const noexcept {
  void** end = items_ + count_;
  void** found = std::find(items_, end, item);
  return found == end ? -1 : static_cast<int>(found - items_);
}

bool XDMList::grow() noexcept {
  if (capacity_ > INT_MAX - growthStep) return false;
  std::size_t slots = static_cast<std::size_t>(capacity_) + growthStep;
  void* grown = std::realloc(items_, slots * sizeof(void*));
  if (!grown) return false;
  items_ = static_cast<void**>(grown);
  std::fill_n(items_ + capacity_, growthStep, nullptr);
  capacity_ += growthStep;
  return true;
}

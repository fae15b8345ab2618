// The steps by which selected columns pass through a node.
// Tested by tests/unit/kvxdmxqy_mark_test.cpp.
#include "kvxdmselected.h"

#include <algorithm>
#include <new>
#include <utility>

SelectedSteps::Added SelectedSteps::add(std::string_view step) noexcept {
  if (holds(step)) return Added::yes;
  Added failure = Added::noMemoryForStep;
  try {
    if (!hasFirst_) {
      first_ += step;
      hasFirst_ = true;
    } else {
      std::string copy(step);
      failure = Added::noMemoryForList;
      others_.push_back(std::move(copy));
    }
    return Added::yes;
  } catch (const std::bad_alloc&) {
    return failure;
  }
}

bool SelectedSteps::holds(std::string_view step) const noexcept {
  return hasFirst_ && (first_ == step || std::find(others_.begin(), others_.end(), step) != others_.end());
}

std::string_view SelectedSteps::get(int index) const noexcept {
  if (index < 0 || index >= getCount()) return {};
  return index == 0 ? first_ : others_[static_cast<std::size_t>(index - 1)];
}

void SelectedSteps::clear() noexcept {
  first_.clear();
  hasFirst_ = false;
  others_.clear();
}

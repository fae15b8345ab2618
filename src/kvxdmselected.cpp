// The steps by which selected columns pass through a node.
// Tested by tests/unit/kvxdmxqy_mark_test.cpp.
#include "kvxdmselected.h"

#include <memory>
#include <new>

#include "kvxdmtext.h"

namespace {

KvbString* stepOf(void* item) noexcept { return static_cast<KvbString*>(item); }

std::unique_ptr<KvbString> copyOf(std::string_view step) noexcept {
  std::unique_ptr<KvbString> copy(new (std::nothrow) KvbString);
  bool failed = false;
  if (copy) copy->append(step.data(), static_cast<unsigned>(step.size()), &failed);
  if (failed) copy.reset();
  return copy;
}

}  // namespace

SelectedSteps::Added SelectedSteps::add(std::string_view step) noexcept {
  for (int i = 0; i < steps_.getCount(); ++i) {
    if (view(*stepOf(steps_.getItem(i))) == step) return Added::yes;
  }
  std::unique_ptr<KvbString> copy = copyOf(step);
  if (!copy) return Added::noMemoryForStep;
  if (!steps_.appendItem(copy.get())) return Added::noMemoryForList;
  static_cast<void>(copy.release());  // the list holds it from now on
  return Added::yes;
}

KvbString SelectedSteps::get(int index) const noexcept {
  const KvbString* step = stepOf(steps_.getItem(index));
  return step ? *step : KvbString();
}

void SelectedSteps::clear() noexcept {
  for (int i = 0; i < steps_.getCount(); ++i) delete stepOf(steps_.getItem(i));
  steps_.release();
}

// The steps by which selected columns pass through a node.
#ifndef KVXDM_SRC_KVXDMSELECTED_H
#define KVXDM_SRC_KVXDMSELECTED_H

#include <string_view>

#include <kvxdm/kvxdm.h>

/** Distinct steps in order of first arrival. It owns its steps. */
class SelectedSteps {
 public:
  enum class Added { yes, noMemoryForStep, noMemoryForList };

  SelectedSteps() noexcept = default;
  ~SelectedSteps() { clear(); }
  SelectedSteps(const SelectedSteps&) = delete;
  SelectedSteps& operator=(const SelectedSteps&) = delete;

  /** Adds `step` unless it is there. */
  Added add(std::string_view step) noexcept;

  int getCount() const noexcept { return steps_.getCount(); }

  /** A copy of the step at `index`, null out of range. */
  KvbString get(int index) const noexcept;

  /** Destroys the steps and frees the list. */
  void clear() noexcept;

 private:
  XDMList steps_;
};

#endif

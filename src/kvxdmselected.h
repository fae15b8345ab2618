// The steps by which selected columns pass through a node.
#ifndef KVXDM_SRC_KVXDMSELECTED_H
#define KVXDM_SRC_KVXDMSELECTED_H

#include <string>
#include <string_view>
#include <vector>

/** Distinct steps in order of first arrival. It owns its steps. */
class SelectedSteps {
 public:
  enum class Added { yes, noMemoryForStep, noMemoryForList };

  /** Adds `step` unless it is there. */
  Added add(std::string_view step) noexcept;

  int getCount() const noexcept { return hasFirst_ ? 1 + static_cast<int>(others_.size()) : 0; }

  /** The step at `index`, valid until the next change; empty out of range. */
  std::string_view get(int index) const noexcept;

  void clear() noexcept;

 private:
  bool holds(std::string_view step) const noexcept;

  // Nearly every node has one step, which lies in the node and keeps its memory from one marking pass to the next.
  std::string first_;
  bool hasFirst_ = false;
  std::vector<std::string> others_;
};

#endif

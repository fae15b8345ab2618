// The steps of an absolute XPath, from the root on and from the end back.
#ifndef KVXDM_SRC_KVXDMXQY_STEPS_H
#define KVXDM_SRC_KVXDMXQY_STEPS_H

#include <cstddef>
#include <string_view>
#include <utility>

/**
 * Walks the steps of an absolute XPath. The first character is skipped unexamined, as the "/" that it is in an absolute
 * XPath. Empty steps between two "/" count; what follows a last "/" does not.
 */
class XPathSteps {
 public:
  explicit XPathSteps(std::string_view xpath) noexcept : xpath_(xpath) {}

  /** Gives the next step; false at the end. */
  bool next(std::string_view* step) noexcept {
    if (position_ >= xpath_.size()) return false;
    const std::size_t slash = xpath_.find('/', position_);
    const std::size_t end = slash == std::string_view::npos ? xpath_.size() : slash;
    *step = xpath_.substr(position_, end - position_);
    position_ = end + 1;
    return true;
  }

 private:
  std::string_view xpath_;
  std::size_t position_ = 1;
};

/** Cuts steps from the end of an XPath. Without a "/" left the step is all that remains, and nothing remains. */
class LastSteps {
 public:
  explicit LastSteps(std::string_view xpath) noexcept : remaining_(xpath) {}

  /** What has not been cut off. */
  std::string_view remaining() const noexcept { return remaining_; }

  std::string_view cut() noexcept {
    const std::size_t slash = remaining_.rfind('/');
    if (slash == std::string_view::npos) return std::exchange(remaining_, std::string_view());
    const std::string_view step = remaining_.substr(slash + 1);
    remaining_ = remaining_.substr(0, slash);
    return step;
  }

 private:
  std::string_view remaining_;
};

#endif

// The tree behind KvDom: elements, attributes and the character data of one document.
// Tested by tests/unit/kvdom_read_test.cpp and tests/unit/kvdom_write_test.cpp.
#ifndef KVXDOM_KVDOM_TREE_H
#define KVXDOM_KVDOM_TREE_H

#include <kvxbase/kvbstring.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

struct KvDomAttribute {
  KvbString name;
  KvbString value;
  KvDomAttribute* next = nullptr;
};

/** An element. Its character data, that of its descendants included, is the piece [textBegin, textEnd) of the text. */
struct KvDomElement {
  KvbString name;
  KvDomElement* parent;
  KvDomElement* firstChild = nullptr;
  KvDomElement* lastChild = nullptr;
  KvDomElement* nextSibling = nullptr;
  KvDomAttribute* firstAttribute = nullptr;
  std::uint32_t textBegin;
  std::uint32_t textEnd;
  std::uint32_t line = 0;
};

static_assert(sizeof(KvDomElement) == 64, "documents may have 50 million elements");

/**
 * One document. Elements and attributes stay where they are in memory until the tree goes; nothing here walks it by
 * recursion, so its depth does not matter. Operations throw std::bad_alloc and then have changed nothing that shows.
 */
struct KvDomTree {
 public:
  /** The first element added; null before. */
  KvDomElement* root() { return elements_.empty() ? nullptr : &elements_.front(); }

  /** Adds an element, without character data yet, at `textPosition`: as the last child of `parent`, or as the root. */
  KvDomElement* addElement(KvDomElement* parent, KvbString name, std::size_t textPosition);

  /** Adds an attribute behind `last`, the last one of `element`; null when it has none. */
  KvDomAttribute* addAttribute(KvDomElement& element, KvDomAttribute* last, KvbString name, KvbString value);

  /** Takes `element` out from among its siblings and its character data out of the text. REQUIRES: it has a parent. */
  void detach(KvDomElement& element);

  /** The number of elements ever added. */
  std::size_t elementCount() const { return elements_.size(); }

  /** The character data of the whole document, in document order; the reader appends to it. */
  std::string& text() { return text_; }
  std::string_view text(std::uint32_t begin, std::uint32_t end) const {
    return std::string_view(text_).substr(begin, end - begin);
  }

 private:
  void cutText(std::uint32_t begin, std::uint32_t end);

  std::deque<KvDomElement> elements_;
  std::deque<KvDomAttribute> attributes_;
  std::string text_;
};

#endif

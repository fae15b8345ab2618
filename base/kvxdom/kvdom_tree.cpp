// The tree behind KvDom: elements, attributes and the character data of one document.
// Tested by tests/unit/kvdom_read_test.cpp and tests/unit/kvdom_write_test.cpp.
#include <kvxdom/kvdom_tree.h>

#include <utility>

namespace {

void linkLast(KvDomElement& parent, KvDomElement& child) {
  (parent.lastChild ? parent.lastChild->nextSibling : parent.firstChild) = &child;
  parent.lastChild = &child;
}

KvDomElement* previousSibling(const KvDomElement& element) {
  KvDomElement* sibling = element.parent->firstChild;
  if (sibling == &element) return nullptr;
  while (sibling->nextSibling != &element) sibling = sibling->nextSibling;
  return sibling;
}

void unlink(KvDomElement& element) {
  KvDomElement& parent = *element.parent;
  KvDomElement* previous = previousSibling(element);
  (previous ? previous->nextSibling : parent.firstChild) = element.nextSibling;
  if (parent.lastChild == &element) parent.lastChild = previous;
  element.parent = element.nextSibling = nullptr;
}

/** Where position `at` of the text lies once [begin, end) is cut out of it. */
std::uint32_t afterCut(std::uint32_t at, std::uint32_t begin, std::uint32_t end) {
  if (at <= begin) return at;
  return at < end ? begin : at - (end - begin);
}

}  // namespace

KvDomElement* KvDomTree::addElement(KvDomElement* parent, KvbString name, std::size_t textPosition) {
  auto at = static_cast<std::uint32_t>(textPosition);
  elements_.push_back({.name = std::move(name), .parent = parent, .textBegin = at, .textEnd = at});
  KvDomElement* element = &elements_.back();
  if (parent) linkLast(*parent, *element);
  return element;
}

KvDomAttribute* KvDomTree::addAttribute(KvDomElement& element, KvDomAttribute* last, KvbString name, KvbString value) {
  attributes_.push_back({std::move(name), std::move(value)});
  KvDomAttribute* attribute = &attributes_.back();
  (last ? last->next : element.firstAttribute) = attribute;
  return attribute;
}

void KvDomTree::detach(KvDomElement& element) {
  unlink(element);
  if (element.textBegin != element.textEnd) cutText(element.textBegin, element.textEnd);
}

void KvDomTree::cutText(std::uint32_t begin, std::uint32_t end) {
  text_.erase(begin, end - begin);
  for (KvDomElement& element : elements_) {
    element.textBegin = afterCut(element.textBegin, begin, end);
    element.textEnd = afterCut(element.textEnd, begin, end);
  }
}

// A plain tree that walks its lists and recomputes: what the library's tree, with its indexes, is held against.
#ifndef KVXDM_TESTS_PLAIN_TREE_H
#define KVXDM_TESTS_PLAIN_TREE_H

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class XDMAttrImpl;
class XDMElemImpl;
class XDMNSImpl;

struct PlainElement;

struct PlainNamespace {
  std::string prefix;
  std::string uri;
  XDMNSImpl* real;
};

struct PlainAttribute {
  PlainElement* owner;
  std::string name;
  PlainNamespace* ns;
  std::string xpath;
  XDMAttrImpl* real;
  std::vector<std::string> steps = {};
};

struct PlainElement {
  PlainElement* parent;
  std::string name;
  std::string xpath;
  XDMElemImpl* real = nullptr;
  PlainNamespace* ns = nullptr;
  bool beenHere = false;
  bool decidesRow = false;
  bool selectedChild = false;
  int distance = 0;
  std::vector<std::string> steps = {};
  std::vector<std::unique_ptr<PlainNamespace>> namespaces = {};
  std::vector<std::unique_ptr<PlainAttribute>> attributes = {};
  std::vector<std::unique_ptr<PlainElement>> children = {};
};

inline std::string prefixOf(const PlainNamespace* ns) { return ns ? ns->prefix : ""; }

inline std::string qualified(const std::string& prefix, const std::string& name) {
  return prefix.empty() ? name : prefix + ":" + name;
}

inline std::string qualifiedName(const PlainElement& element) { return qualified(prefixOf(element.ns), element.name); }

/** Where `item` stands in `list`. */
template <class Item>
std::size_t positionOf(const std::vector<std::unique_ptr<Item>>& list, const Item* item) {
  std::size_t position = 0;
  while (list[position].get() != item) ++position;
  return position;
}

/** The item behind `item`, null at the end. */
template <class Item>
Item* next(const std::vector<std::unique_ptr<Item>>& list, const Item* item) {
  std::size_t position = positionOf(list, item) + 1;
  return position < list.size() ? list[position].get() : nullptr;
}

inline PlainElement* nextSibling(const PlainElement& element) {
  return element.parent ? next(element.parent->children, &element) : nullptr;
}

struct Place {
  PlainElement* found;
  std::size_t position;
};

/** The child of that prefix and name, or the position for a new one. */
inline Place placeOfChild(const PlainElement& parent, const std::string& prefix, const std::string& name) {
  std::size_t position = 0;
  for (const auto& child : parent.children) {
    if (child->name == name && prefixOf(child->ns) == prefix) return {child.get(), position};
    if (!child->beenHere) break;
    ++position;
  }
  return {nullptr, position};
}

inline PlainAttribute* findAttribute(const PlainElement& owner, const PlainNamespace* ns, const std::string& name) {
  for (const auto& attribute : owner.attributes) {
    bool sameUri = ns && attribute->ns ? ns->uri == attribute->ns->uri : ns == attribute->ns;
    if (attribute->name == name && sameUri) return attribute.get();
  }
  return nullptr;
}

inline PlainNamespace* lookUp(const PlainElement& element, const std::string& prefix) {
  for (const auto& declaration : element.namespaces) {
    if (declaration->prefix == prefix) return declaration.get();
  }
  return element.parent ? lookUp(*element.parent, prefix) : nullptr;
}

/** How many of `steps` lead from `root` down the tree. */
inline std::size_t matchingSteps(const PlainElement& root, const std::vector<std::string>& steps) {
  std::size_t matched = 0;
  const PlainElement* node = &root;
  while (node) {
    if (qualifiedName(*node) == steps[matched]) {
      if (++matched == steps.size() || node->children.empty()) return matched;
      node = node->children.front().get();
    } else {
      node = nextSibling(*node);
    }
  }
  return matched;
}

inline int distanceToRow(PlainElement& element) {
  if (element.distance != 0) return element.distance;
  for (const auto& child : element.children) {
    if (child->decidesRow) return element.distance = 1;
    element.distance = distanceToRow(*child);
    if (element.distance != 0) return ++element.distance;
  }
  return element.distance;
}

inline void flagUpwards(PlainElement* element) {
  for (; element; element = element->parent) element->selectedChild = true;
}

inline void addStep(std::vector<std::string>* steps, const std::string& step) {
  for (const std::string& known : *steps) {
    if (known == step) return;
  }
  steps->push_back(step);
}

inline void clearSteps(PlainElement& element) {
  element.steps.clear();
  for (const auto& attribute : element.attributes) attribute->steps.clear();
  if (!element.selectedChild) return;
  for (const auto& child : element.children) clearSteps(*child);
  element.selectedChild = false;
}

#endif

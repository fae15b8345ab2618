// The library's tree and a plain one side by side: every operation is done on both and the answers compared.
// Driven at random by tests/unit/kvxdmindex_test.cpp and by inputs of its own making by fuzz/tree.cpp.
#ifndef KVXDM_TESTS_BOTH_TREES_H
#define KVXDM_TESTS_BOTH_TREES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model.h"
#include "plain_tree.h"

/** The two trees and the operations on both. Every operation compares what the two answer. */
class BothTrees {
 public:
  /** Makes a choice: a number from 0 and below the one given. */
  using Choose = std::function<int(int below)>;

  explicit BothTrees(Choose choose) : choose_(std::move(choose)) {
    root_.real = model_.root;
    elements_.push_back(&root_);
    info_.setXDM(&model_.main);
    declare();
  }

  void operate() {
    int choice = number(100);
    for (const Operation& operation : operations) {
      if ((choice -= operation.weight) < 0) return (this->*operation.run)();
    }
  }

  void compareEverything() {
    for (PlainElement* element : elements_) {
      compareChildren(*element);
      compareAttributes(*element);
      compareMarks(*element);
    }
    EXPECT_EQ(model_.main.decidingElement(), deciding_ ? deciding_->real : nullptr);
  }

  std::size_t longestChildList() const {
    std::size_t longest = 0;
    for (const PlainElement* element : elements_) longest = std::max(longest, element->children.size());
    return longest;
  }

 private:
  struct Operation {
    int weight;
    void (BothTrees::*run)();
  };
  static const std::vector<Operation> operations;

  int number(int below) { return choose_(below); }
  bool chance(int percent) { return number(100) < percent; }
  template <class Item>
  Item* anyOf(const std::vector<Item*>& items) {
    return items[static_cast<std::size_t>(number(static_cast<int>(items.size())))];
  }

  /** An element: often one of the first few, whose lists grow long, otherwise any. */
  PlainElement& anyElement() {
    if (chance(50)) return *elements_[static_cast<std::size_t>(number(4)) % elements_.size()];
    return *anyOf(elements_);
  }

  /** A name of forty; some hold a colon, as if they had a prefix. */
  std::string anyName() {
    std::string name = "n" + std::to_string(number(40));
    return chance(3) ? "p:" + name : name;
  }

  /** None, or one of some prefixes; one holds a colon too. */
  std::string anyPrefix() {
    static const std::vector<std::string> few = {"", "", "p", "q", "p:p"};
    return chance(80) ? few[static_cast<std::size_t>(number(5))] : "p" + std::to_string(number(30));
  }

  PlainNamespace* anyNamespace() { return chance(50) ? nullptr : anyOf(namespaces_); }
  static XDMNSImpl* realOf(const PlainNamespace* ns) { return ns ? ns->real : nullptr; }

  void createChild() {
    PlainElement& parent = anyElement();
    const std::string prefix = anyPrefix(), name = anyName();
    Place place = placeOfChild(parent, prefix, name);
    bool created = false;
    XDMElemImpl* real = parent.real->createChild(kv(prefix), kv(name), &created);
    EXPECT_EQ(created, place.found == nullptr);
    if (place.found) {
      EXPECT_EQ(real, place.found->real);
    } else {
      addChildAt(parent, place.position, prefix, name, real);
    }
  }

  void addChildAt(PlainElement& parent, std::size_t position, const std::string& prefix, const std::string& name,
                  XDMElemImpl* real) {
    std::string xpath = parent.xpath + "/" + qualified(prefix, name);
    EXPECT_EQ(str(real->getXPath()), xpath);
    auto child = std::make_unique<PlainElement>(PlainElement{&parent, name, xpath, real});
    elements_.push_back(child.get());
    parent.children.insert(parent.children.begin() + static_cast<std::ptrdiff_t>(position), std::move(child));
    compareNeighbours(*elements_.back());
    if (!prefix.empty()) bind(*elements_.back(), lookUp(parent, prefix));
    if (chance(60)) visit(*elements_.back());
  }

  void createAttribute() {
    PlainElement& owner = anyElement();
    PlainNamespace* ns = anyNamespace();
    const std::string name = anyName();
    PlainAttribute* found = findAttribute(owner, ns, name);
    bool created = false;
    XDMAttrImpl* real = owner.real->createAttribute(realOf(ns), kv(name), &created);
    EXPECT_EQ(created, found == nullptr);
    if (found) {
      EXPECT_EQ(real, found->real);
      return;
    }
    std::string xpath = owner.xpath + "/@" + qualified(prefixOf(ns), name);
    EXPECT_EQ(str(real->getXPath()), xpath);
    owner.attributes.push_back(std::make_unique<PlainAttribute>(PlainAttribute{&owner, name, ns, xpath, real}));
    attributes_.push_back(owner.attributes.back().get());
  }

  void declare() {
    PlainElement& element = anyElement();
    const std::string prefix = anyPrefix(), uri = std::string("uv").substr(0, static_cast<std::size_t>(number(3)));
    XDMNSImpl* real = element.real->createNamespace(kv(prefix), kv(uri));
    element.namespaces.push_back(std::make_unique<PlainNamespace>(PlainNamespace{prefix, uri, real}));
    namespaces_.push_back(element.namespaces.back().get());
  }

  void visit(PlainElement& element) {
    element.beenHere = true;
    element.real->setBeenHere();
  }

  void visitAny() { visit(anyElement()); }

  void visitFirstUnvisited() {
    for (const auto& child : anyElement().children) {
      if (!child->beenHere) return visit(*child);
    }
  }

  void bind(PlainElement& element, PlainNamespace* ns) {
    element.ns = ns;
    element.real->setNamespace(realOf(ns));
  }

  void bindAnyElement() { bind(*anyOf(elements_), anyNamespace()); }

  void bindAnyAttribute() {
    if (attributes_.empty()) return;
    PlainAttribute* attribute = anyOf(attributes_);
    attribute->ns = anyNamespace();
    attribute->real->setNamespace(realOf(attribute->ns));
  }

  void lookUpNamespace() {
    PlainElement& element = anyElement();
    const std::string prefix = anyPrefix();
    EXPECT_EQ(element.real->lookupNamespace(kv(prefix)), realOf(lookUp(element, prefix)));
  }

  void walk() {
    compareNeighbours(*anyOf(elements_));
    compareNamespaces(anyElement());
    if (attributes_.empty()) return;
    PlainAttribute* attribute = anyOf(attributes_);
    PlainElement& element = anyElement();
    PlainAttribute* following = next(attribute->owner->attributes, attribute);
    EXPECT_EQ(attribute->real->getNextSibling(), following ? following->real : nullptr);
    EXPECT_EQ(element.real->getNextAttribute(attribute->real),
              &element == attribute->owner && following ? following->real : nullptr);
  }

  void validateXPath() {
    std::vector<std::string> steps = stepsTo(*anyOf(elements_));
    if (chance(30))
      steps[static_cast<std::size_t>(number(static_cast<int>(steps.size())))] = qualified(anyPrefix(), anyName());
    if (chance(30)) steps.push_back(chance(50) ? "@" + anyName() : qualified(anyPrefix(), anyName()));
    std::string xpath;
    for (const std::string& step : steps) xpath += "/" + step + (chance(20) ? "[1]" : "");

    std::size_t matched = matchingSteps(root_, steps);
    bool valid = matched == steps.size() || (matched + 1 == steps.size() && steps.back()[0] == '@');
    KvbString error;
    EXPECT_EQ(info_.setXPath(kv(xpath), true, &error), valid) << xpath;
    EXPECT_EQ(str(error), valid ? "" : catalogue(1445, steps[matched].c_str())) << xpath;
  }

  std::vector<std::string> stepsTo(const PlainElement& element) {
    std::vector<std::string> steps;
    if (element.parent) steps = stepsTo(*element.parent);
    steps.push_back(qualifiedName(element));
    return steps;
  }

  void decideRow() {
    PlainElement& element = *anyOf(elements_);
    bool decides = chance(70);
    setDecidesRow(element, decides);
    EXPECT_EQ(element.real->setDecidesRow(decides), decides);
    EXPECT_EQ(model_.main.decidingElement(), deciding_ ? deciding_->real : nullptr);
  }

  void setDecidesRow(PlainElement& element, bool decides) {
    element.decidesRow = decides;
    if (deciding_ && deciding_ != &element) setDecidesRow(*deciding_, false);
    deciding_ = decides ? &element : nullptr;
  }

  void askForDistance() {
    PlainElement& element = anyElement();
    EXPECT_EQ(element.real->parentOfDecidingRow(), distanceToRow(element));
  }

  void selectElement() {
    PlainElement& element = anyElement();
    const std::string step = anyName();
    flagUpwards(element.parent);
    addStep(&element.steps, step);
    element.beenHere = true;
    EXPECT_TRUE(element.real->addSelectedXPath(kv(step)));
    compareMarksUpwards(&element);
  }

  void selectAttribute() {
    if (attributes_.empty()) return;
    PlainAttribute* attribute = anyOf(attributes_);
    const std::string step = anyName();
    flagUpwards(attribute->owner->parent);
    addStep(&attribute->steps, step);
    EXPECT_TRUE(attribute->real->addSelectedXPath(kv(step)));
    compareMarksUpwards(attribute->owner);
  }

  void clear() {
    PlainElement& element = *anyOf(elements_);
    clearSteps(element);
    element.real->clearSelectedXPaths();
    compareMarksUpwards(&element);
  }

  void compareNeighbours(const PlainElement& element) {
    PlainElement* following = nextSibling(element);
    EXPECT_EQ(element.real->getNextSibling(), following ? following->real : nullptr);
    if (!element.parent) return;
    std::size_t position = positionOf(element.parent->children, &element);
    XDMNode* before = position == 0 ? nullptr : element.parent->children[position - 1]->real;
    EXPECT_EQ(before ? before->getNextSibling() : element.parent->real->getChild(), element.real);
  }

  void compareChildren(const PlainElement& element) {
    XDMNode* real = element.real->getChild();
    for (const auto& child : element.children) {
      ASSERT_EQ(real, child->real);
      real = real->getNextSibling();
    }
    EXPECT_EQ(real, nullptr);
  }

  void compareAttributes(const PlainElement& element) {
    XDMAttribute* real = nullptr;
    for (const auto& attribute : element.attributes) {
      real = element.real->getNextAttribute(real);
      ASSERT_EQ(real, attribute->real);
      EXPECT_EQ(stepsOf(*attribute->real), attribute->steps);
    }
    EXPECT_EQ(element.attributes.empty() ? nullptr : real->getNextSibling(), nullptr);
  }

  void compareNamespaces(const PlainElement& element) {
    XDMNamespace* real = nullptr;
    for (const auto& declaration : element.namespaces) {
      real = element.real->getNextNamespace(real);
      ASSERT_EQ(real, declaration->real);
    }
    EXPECT_EQ(element.namespaces.empty() ? nullptr : real->getNextSibling(), nullptr);
  }

  void compareMarks(const PlainElement& element) {
    EXPECT_EQ(element.real->hasSelectedChild(), element.selectedChild);
    EXPECT_EQ(element.real->getDecidesRow(), element.decidesRow);
    EXPECT_EQ(stepsOf(*element.real), element.steps);
  }

  void compareMarksUpwards(const PlainElement* element) {
    for (; element; element = element->parent) compareMarks(*element);
  }

  template <class Node>
  static std::vector<std::string> stepsOf(const Node& node) {
    std::vector<std::string> steps;
    for (int i = 0; i < node.getSelectedXPaths(); ++i) steps.push_back(str(node.getSelectedXPath(i)));
    return steps;
  }

  Choose choose_;
  Model model_{"n0"};
  XDMColumnInfo info_;
  PlainElement root_{nullptr, "n0", "/n0"};
  PlainElement* deciding_ = nullptr;
  std::vector<PlainElement*> elements_;
  std::vector<PlainAttribute*> attributes_;
  std::vector<PlainNamespace*> namespaces_;
};

// The weights are per cent.
inline const std::vector<BothTrees::Operation> BothTrees::operations = {
    {34, &BothTrees::createChild},   {15, &BothTrees::createAttribute},
    {6, &BothTrees::visitAny},       {9, &BothTrees::visitFirstUnvisited},
    {5, &BothTrees::bindAnyElement}, {2, &BothTrees::bindAnyAttribute},
    {3, &BothTrees::declare},        {4, &BothTrees::lookUpNamespace},
    {5, &BothTrees::walk},           {6, &BothTrees::validateXPath},
    {2, &BothTrees::decideRow},      {4, &BothTrees::askForDistance},
    {2, &BothTrees::selectElement},  {2, &BothTrees::selectAttribute},
    {1, &BothTrees::clear},
};

#endif

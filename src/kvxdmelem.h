// Element nodes and the construction of the tree.
// Tested by tests/unit/kvxdmelem_test.cpp and tests/unit/kvxdmindex_test.cpp.
#ifndef KVXDM_SRC_KVXDMELEM_H
#define KVXDM_SRC_KVXDMELEM_H

#include <cstddef>
#include <string_view>

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

#include "kvxdmattr.h"
#include "kvxdmindex.h"
#include "kvxdmnode.h"
#include "kvxdmns.h"
#include "kvxdmselected.h"

class XDMMainImpl;

/** An element of the model. It owns its children, attributes and namespace declarations. */
class XDMElemImpl final : public XDMNodeImpl<XDMElement> {
 public:
  /**
   * The most elements that may stand inside each other, the root counts. A document may have as many, but its own root
   * element is one of them: a model of that depth, which only an XMLMap can make, is saved but not loaded again.
   */
  static constexpr int deepest = 1'000;

  /** The XPath takes `prefix`, since a new element has no namespace yet. */
  XDMElemImpl(XDMMainImpl* main, XDMElemImpl* parent, const KvbString& prefix, const KvbString& localName) noexcept;

  // XDMNode
  int nodeType() override;
  XDMElement* getChild() override;
  XDMNode* getNextSibling() override;
  XDMElement* getParent() override;

  // XDMElement
  bool getDecidesRow() override;
  int getMaxOccurrences() override;
  int getNamespaces() override;
  XDMAttribute* getNextAttribute(XDMAttribute* previous) override;
  XDMNamespace* getNextNamespace(XDMNamespace* previous) override;
  bool setDecidesRow(bool decides) override;

  virtual ~XDMElemImpl();

  // The tree, for the library itself
  XDMElemImpl* parent() const noexcept { return parent_; }
  XDMElemImpl* firstChild() const noexcept { return static_cast<XDMElemImpl*>(children_.getItem(0)); }
  XDMElemImpl* nextSibling() const noexcept { return next_; }
  XDMAttrImpl* firstAttribute() const noexcept { return static_cast<XDMAttrImpl*>(attributes_.getItem(0)); }
  XDMNSImpl* firstNamespace() const noexcept { return static_cast<XDMNSImpl*>(namespaces_.getItem(0)); }
  static XDMAttrImpl* next(const XDMAttrImpl* attribute) noexcept { return attribute->next_; }
  static XDMNSImpl* next(const XDMNSImpl* declaration) noexcept { return declaration->next_; }

  /**
   * The child of that prefix and name, made when it is not found. Children that have been visited are passed over; the
   * search ends at the first unvisited child that does not match, and a new child goes right before it. So children
   * keep document order while location paths are merged into the tree, and a child of the same name beyond that point
   * is not found.
   * Null on failure, with the main object's error message set.
   */
  XDMElemImpl* createChild(const KvbString& prefix, const KvbString& localName, bool* created) noexcept;

  /**
   * The attribute of that name and namespace URI, made when it is not found. (Children are told apart by prefix,
   * attributes by URI.) Null on failure, with the main object's error message set.
   */
  XDMAttrImpl* createAttribute(XDMNamespace* ns, const KvbString& localName, bool* created) noexcept;

  /** A new declaration on this element, whatever was declared before. Null on failure, with the message set. */
  XDMNSImpl* createNamespace(const KvbString& prefix, const KvbString& uri) noexcept;

  /** The nearest declaration of `prefix` on this element or an ancestor, the earliest on one element; or null. */
  XDMNSImpl* lookupNamespace(const KvbString& prefix) noexcept;

  /** The first child whose qualified name (prefix of its namespace, ":", local name) is `name`; null without one.
   * `*failed` becomes true when memory is exhausted. */
  XDMElemImpl* findChild(const KvbString& name, bool* failed) noexcept;

  /** The qualified name: prefix of the namespace and ":" when it is not empty, local name. */
  KvbString qualifiedName(bool* failed) const noexcept;

  void setNamespace(XDMNamespace* ns) noexcept;

  /** Whether there was memory for the XPath when the element was made; without, the message is set. */
  bool hasXPath() const noexcept { return columnInfo_.getXPath().length() != 0; }

  /** An attribute of this element is about to get another namespace. */
  void attributeRenamed() noexcept { attributeIndex_.drop(); }

  /** Marks this element as visited by a location path. It stays so. */
  void setBeenHere() noexcept { beenHere_ = true; }

  // Marks of the selected columns
  bool hasSelectedChild() const noexcept { return selectedChild_; }
  void setSelectedChild() noexcept { selectedChild_ = true; }
  int getSelectedXPaths() const noexcept { return selectedXPaths_.getCount(); }
  std::string_view getSelectedXPath(int index) const noexcept { return selectedXPaths_.get(index); }

  /** Records `step`, marks this element as visited and flags its ancestors as having a selected child. False with the
   * main object's error message set. */
  bool addSelectedXPath(std::string_view step) noexcept;
  bool addSelectedXPath(const KvbString& step) noexcept;

  /** Flags this element and its ancestors as having a selected child. */
  void flagSelectedChildUpwards() noexcept;

  /** Clears the marks of this element, its attributes and, as far as they are flagged, its descendants. */
  void clearSelectedXPaths() noexcept;

  /** The marking pass in which the declarations of this element went into the prolog for good; 0 for none. */
  unsigned declaredInPass() const noexcept { return declaredInPass_; }
  void setDeclaredInPass(unsigned pass) noexcept { declaredInPass_ = pass; }

  /** How many levels below this element the one that decides the row lies; 0 when none does. */
  int parentOfDecidingRow() noexcept;

  // The XDM document
  /** Writes this element and its subtree under `parent`. False with the main object's error message set. */
  bool toDOM(KvDomNode& parent);

  /** Reads an element and its subtree from `node` into `parent`, or as the root for null. False with the main object's
   * error message set; what was read stays. */
  static bool fromDOM(XDMMainImpl* main, XDMElemImpl* parent, KvDomNode& node);

  /** What tells this element apart from its siblings. */
  NodeKey key() const noexcept;

 private:
  XDMElemImpl* childAt(int index) const noexcept { return static_cast<XDMElemImpl*>(children_.getItem(index)); }
  XDMElemImpl* firstUnvisitedChild() noexcept;
  XDMElemImpl* lookupChild(const NodeKey& key) noexcept;
  XDMElemImpl* walkToChild(const NodeKey& key) const noexcept;
  const char* linkChild(XDMElemImpl* child) noexcept;
  void indexChildren() noexcept;
  void indexNewest() noexcept;
  XDMElemImpl* walkToQualifiedName(const KvbString& name, bool* failed) const noexcept;
  XDMElemImpl* findIndexedChild(std::string_view qualifiedName) const noexcept;
  XDMElemImpl* earlierChild(XDMElemImpl* one, XDMElemImpl* other) const noexcept;

  XDMAttrImpl* lookupAttribute(const NodeKey& key) noexcept;
  XDMNSImpl* ownNamespace(const KvbString& prefix) noexcept;

  bool read(KvDomNode& node, const KvbString& prefix);
  bool readOccurs(const KvbString& occurs);
  bool readNamespaces(KvDomNode& node, KvDomNode* firstOther);
  bool readChildren(KvDomNode child);

  std::nullptr_t fail(const char* text) noexcept;

  // What marking and writing queries look at lies together, so that less of each node comes from memory.
  XDMElemImpl* parent_;
  XDMElemImpl* next_ = nullptr;
  bool decidesRow_ = false;
  bool beenHere_ = false;
  bool selectedChild_ = false;
  bool inVisitedPrefix_ = false;  // this element stands among the first visitedPrefix_ children of its parent
  unsigned declaredInPass_ = 0;
  SelectedSteps selectedXPaths_;
  XDMList namespaces_;
  XDMList attributes_;
  XDMList children_;
  const int depth_;
  int maxOccurrences_ = 1;
  int decidingRowDistance_ = 0;

  // What keeps the operations above linear; none of it changes a result. So do next_, inVisitedPrefix_ and
  // declaredInPass_.
  int visitedPrefix_ = 0;          // so many children from the front are known to have been visited
  int indexedAttributes_ = 0;      // so many attributes from the front are in the index
  int indexedNamespaces_ = 0;      // so many declarations from the front are in the index
  unsigned noRowBelow_ = 0;        // the row-mark version for which the distance 0 holds
  XDMElemImpl* newest_ = nullptr;  // not in the index yet, since its namespace is still to be set
  NodeIndex<XDMElemImpl> childIndex_;
  NodeIndex<XDMAttrImpl> attributeIndex_;
  NodeIndex<XDMNSImpl> namespaceIndex_;
};

/** The library's own node behind the interface. REQUIRES: the node is an element. */
inline XDMElemImpl* implOf(XDMElement* element) noexcept { return static_cast<XDMElemImpl*>(element); }

#endif

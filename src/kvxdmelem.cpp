// Element nodes and the construction of the tree.
// Tested by tests/unit/kvxdmelem_test.cpp and tests/unit/kvxdmindex_test.cpp.
#include "kvxdmelem.h"

#include <memory>
#include <new>

#include <kvxbase/kvbdatavar.h>

#include "kvxdmdom.h"
#include "kvxdmmain.h"
#include "kvxdmtext.h"

namespace {

constexpr char unit[] = "kvxdmelem";
constexpr kvbType characterString = 4;

/** The prefix of a declaration, empty for none. */
std::string_view prefixOf(XDMNamespace* ns) noexcept { return ns ? view(implOf(ns)->prefix()) : std::string_view(); }

void append(KvbString* text, std::string_view more, bool* failed) noexcept {
  text->append(more.data(), static_cast<unsigned>(more.size()), failed);
}

/**
 * The absolute XPath of a node below `parent`, which is null for the root. Put together elsewhere and copied, it takes
 * no more memory than it needs. Null on failure, with the message set.
 */
KvbString buildXPath(XDMMainImpl* main, const XDMElemImpl* parent, const char* separator, std::string_view prefix,
                     const KvbString& localName) noexcept {
  KvbString& draft = main->xpathDraft();
  bool failed = parent && !parent->hasXPath();
  draft.truncate(0);
  if (parent) draft.append(parent->columnInfo().getXPath(), &failed);
  draft.append(separator, &failed);
  if (!prefix.empty()) {
    append(&draft, prefix, &failed);
    draft.append(":", &failed);
  }
  draft.append(localName, &failed);
  KvbString xpath;
  if (!failed && main->holdXPath(view(draft).size())) xpath = tryToString(view(draft));
  if (isEmpty(xpath)) main->setErrorMessage(message(unit, __LINE__, 29, "(XPath)"));
  return xpath;
}

/** Appends `item` and links it behind the item that was last. */
template <class Item>
bool appendLinked(XDMList* list, Item* item, Item* Item::*next) noexcept {
  Item* last = static_cast<Item*>(list->getItem(list->getCount() - 1));
  if (!list->appendItem(item)) return false;
  if (last) last->*next = item;
  return true;
}

/** Brings the index of a list that only grows at its end up to date, once there are nodes enough for one. */
template <class Node>
void bringUpToDate(NodeIndex<Node>* index, const XDMList& list, int* indexed) noexcept {
  if (list.getCount() <= NodeIndex<Node>::threshold) return;
  if (!index->exists()) {
    *indexed = 0;
    if (!index->create()) return;
  }
  while (index->exists() && *indexed < list.getCount()) {
    index->addLast(static_cast<Node*>(list.getItem((*indexed)++)));
  }
}

/** The text of an element's count. Nearly all may occur once, and that text is there already. */
KvbString occursText(int count) {
  if (count == 1) return domNames().once;
  KvbString text;
  text.assign(count);
  return text;
}

template <class Item>
void deleteItems(const XDMList& list) noexcept {
  for (int i = 0; i < list.getCount(); ++i) delete static_cast<Item*>(list.getItem(i));
}

}  // namespace

XDMElemImpl::XDMElemImpl(XDMMainImpl* main, XDMElemImpl* parent, const KvbString& prefix,
                         const KvbString& localName) noexcept
    : XDMNodeImpl(main, localName), parent_(parent), depth_(parent ? parent->depth_ + 1 : 1) {
  columnInfo_.setType(characterString);
  setXPath(buildXPath(main, parent, "/", view(prefix), localName));
}

XDMElemImpl::~XDMElemImpl() {
  deleteItems<XDMElemImpl>(children_);
  deleteItems<XDMAttrImpl>(attributes_);
  deleteItems<XDMNSImpl>(namespaces_);
}

// XDMNode

int XDMElemImpl::nodeType() { return 1; }

XDMElement* XDMElemImpl::getChild() { return firstChild(); }

XDMNode* XDMElemImpl::getNextSibling() { return next_; }

XDMElement* XDMElemImpl::getParent() { return parent_; }

// XDMElement

bool XDMElemImpl::getDecidesRow() { return decidesRow_; }

int XDMElemImpl::getMaxOccurrences() { return maxOccurrences_; }

int XDMElemImpl::getNamespaces() { return namespaces_.getCount(); }

XDMAttribute* XDMElemImpl::getNextAttribute(XDMAttribute* previous) {
  if (!previous) return firstAttribute();
  const XDMAttrImpl* attribute = static_cast<XDMAttrImpl*>(previous);
  return attribute->parent_ == this ? attribute->next_ : nullptr;
}

XDMNamespace* XDMElemImpl::getNextNamespace(XDMNamespace* previous) {
  if (!previous) return firstNamespace();
  const XDMNSImpl* declaration = implOf(previous);
  return declaration->parent_ == this ? declaration->next_ : nullptr;
}

bool XDMElemImpl::setDecidesRow(bool decides) {
  decidesRow_ = decides;
  return mainImpl()->setDecidesRow(this);
}

// Children

XDMElemImpl* XDMElemImpl::createChild(const KvbString& prefix, const KvbString& localName, bool* created) noexcept {
  if (XDMElemImpl* found = lookupChild({view(localName), view(prefix)})) {
    *created = false;
    return found;
  }
  std::unique_ptr<XDMElemImpl> child;
  if (depth_ < deepest) child.reset(new (std::nothrow) XDMElemImpl(mainImpl(), this, prefix, localName));
  if (!child) return fail("createChild() failed to instantiate a new child");
  if (const char* failure = linkChild(child.get())) return fail(failure);
  *created = true;
  return child.release();
}

/** Puts `child` right before the first unvisited child, at the end without one; what failed, or null. */
const char* XDMElemImpl::linkChild(XDMElemImpl* child) noexcept {
  if (XDMElemImpl* anchor = firstUnvisitedChild()) {
    if (!children_.insertItemAt(visitedPrefix_, child)) return "createChild() failed to insert the new child";
    child->next_ = anchor;
    if (visitedPrefix_ > 0) childAt(visitedPrefix_ - 1)->next_ = child;
  } else if (!appendLinked(&children_, child, &XDMElemImpl::next_)) {
    return "createChild() failed to append the new child";
  }
  newest_ = child;
  return nullptr;
}

/** The child where the search for a place ends. Children stay visited, so the front of them is counted only once. */
XDMElemImpl* XDMElemImpl::firstUnvisitedChild() noexcept {
  XDMElemImpl* child = childAt(visitedPrefix_);
  while (child && child->beenHere_) {
    child->inVisitedPrefix_ = true;
    child = childAt(++visitedPrefix_);
  }
  return child;
}

XDMElemImpl* XDMElemImpl::lookupChild(const NodeKey& key) noexcept {
  indexChildren();
  if (!childIndex_.exists()) return walkToChild(key);
  const XDMElemImpl* anchor = firstUnvisitedChild();
  XDMElemImpl* found = childIndex_.find(key);
  return found && (found->inVisitedPrefix_ || found == anchor) ? found : nullptr;
}

XDMElemImpl* XDMElemImpl::walkToChild(const NodeKey& key) const noexcept {
  for (XDMElemImpl* child = firstChild(); child; child = child->next_) {
    if (child->key() == key) return child;
    if (!child->beenHere_) return nullptr;
  }
  return nullptr;
}

/** Brings the index up to date, once there are children enough for one. */
void XDMElemImpl::indexChildren() noexcept {
  if (childIndex_.exists()) {
    if (newest_) indexNewest();
  } else if (children_.getCount() > NodeIndex<XDMElemImpl>::threshold && childIndex_.create()) {
    for (XDMElemImpl* child = firstChild(); child && childIndex_.exists(); child = child->next_) {
      childIndex_.addLast(child);
    }
  }
  newest_ = nullptr;
}

/** The newest child stands right behind the visited prefix, so before every other child that is not part of it. */
void XDMElemImpl::indexNewest() noexcept {
  childIndex_.addUnless(newest_, [](const XDMElemImpl* namesake) { return namesake->inVisitedPrefix_; });
}

NodeKey XDMElemImpl::key() const noexcept {
  return {view(columnInfo_.getLocalName()), prefixOf(columnInfo_.getNamespace())};
}

XDMElemImpl* XDMElemImpl::findChild(const KvbString& name, bool* failed) noexcept {
  indexChildren();
  return childIndex_.exists() ? findIndexedChild(view(name)) : walkToQualifiedName(name, failed);
}

XDMElemImpl* XDMElemImpl::walkToQualifiedName(const KvbString& name, bool* failed) const noexcept {
  for (XDMElemImpl* child = firstChild(); child; child = child->next_) {
    // Spares making the qualified names of all the others.
    if (!view(name).ends_with(view(child->columnInfo_.getLocalName()))) continue;
    const bool matches = child->qualifiedName(failed).compare(name, true) == 0;
    if (*failed) return nullptr;
    if (matches) return child;
  }
  return nullptr;
}

XDMElemImpl* XDMElemImpl::findIndexedChild(std::string_view qualifiedName) const noexcept {
  XDMElemImpl* found = childIndex_.find({qualifiedName, {}});
  // Names may hold colons of their own, so every colon may be the one behind the prefix.
  for (std::size_t colon = qualifiedName.find(':', 1); colon != std::string_view::npos;
       colon = qualifiedName.find(':', colon + 1)) {
    found = earlierChild(found, childIndex_.find({qualifiedName.substr(colon + 1), qualifiedName.substr(0, colon)}));
  }
  return found;
}

XDMElemImpl* XDMElemImpl::earlierChild(XDMElemImpl* one, XDMElemImpl* other) const noexcept {
  if (!one || !other) return one ? one : other;
  XDMElemImpl* child = firstChild();
  while (child != one && child != other) child = child->next_;
  return child;
}

KvbString XDMElemImpl::qualifiedName(bool* failed) const noexcept {
  const std::string_view prefix = prefixOf(columnInfo_.getNamespace());
  if (prefix.empty()) return columnInfo_.getLocalName();
  KvbString name;
  append(&name, prefix, failed);
  append(&name, ":", failed);
  name.append(columnInfo_.getLocalName(), failed);
  return name;
}

// Attributes and namespace declarations

XDMAttrImpl* XDMElemImpl::createAttribute(XDMNamespace* ns, const KvbString& localName, bool* created) noexcept {
  const std::string_view uri = ns ? view(implOf(ns)->uri()) : std::string_view();
  if (XDMAttrImpl* found = lookupAttribute({view(localName), uri, ns != nullptr})) {
    *created = false;
    return found;
  }
  std::unique_ptr<XDMAttrImpl> attribute(new (std::nothrow) XDMAttrImpl(this, localName));
  if (!attribute) return fail("createAttribute() failed to instantiate a new attribute");
  attribute->columnInfo_.setNamespace(ns);
  const KvbString xpath = buildXPath(mainImpl(), this, "/@", prefixOf(ns), localName);
  if (isEmpty(xpath)) return nullptr;
  attribute->setXPath(xpath);
  if (!appendLinked(&attributes_, attribute.get(), &XDMAttrImpl::next_)) {
    return fail("createAttribute() failed to append  the new attribute");
  }
  *created = true;
  return attribute.release();
}

XDMAttrImpl* XDMElemImpl::lookupAttribute(const NodeKey& key) noexcept {
  bringUpToDate(&attributeIndex_, attributes_, &indexedAttributes_);
  if (attributeIndex_.exists()) return attributeIndex_.find(key);
  XDMAttrImpl* attribute = firstAttribute();
  while (attribute && !(attribute->key() == key)) attribute = attribute->next_;
  return attribute;
}

XDMNSImpl* XDMElemImpl::createNamespace(const KvbString& prefix, const KvbString& uri) noexcept {
  std::unique_ptr<XDMNSImpl> declaration(new (std::nothrow) XDMNSImpl(this, prefix, uri));
  if (!declaration) return fail("createNamespace() failed to instantiate a new namespace");
  if (!appendLinked(&namespaces_, declaration.get(), &XDMNSImpl::next_)) {
    return fail("createNamespace() failed to append  the new namespace");
  }
  return declaration.release();
}

XDMNSImpl* XDMElemImpl::lookupNamespace(const KvbString& prefix) noexcept {
  for (XDMElemImpl* element = this; element; element = element->parent_) {
    if (XDMNSImpl* ns = element->ownNamespace(prefix)) return ns;
  }
  return nullptr;
}

/** The earliest declaration of `prefix` on this element, or null. */
XDMNSImpl* XDMElemImpl::ownNamespace(const KvbString& prefix) noexcept {
  bringUpToDate(&namespaceIndex_, namespaces_, &indexedNamespaces_);
  if (namespaceIndex_.exists()) return namespaceIndex_.find({view(prefix), {}});
  XDMNSImpl* ns = firstNamespace();
  while (ns && ns->prefix_.compare(prefix, true) != 0) ns = ns->next_;
  return ns;
}

void XDMElemImpl::setNamespace(XDMNamespace* ns) noexcept {
  const bool renamed = prefixOf(ns) != prefixOf(columnInfo_.getNamespace());
  const bool indexed = parent_ && parent_->newest_ != this;
  if (renamed && indexed) parent_->childIndex_.drop();
  columnInfo_.setNamespace(ns);
}

std::nullptr_t XDMElemImpl::fail(const char* text) noexcept {
  mainImpl()->setErrorMessage(tryToString(text));
  return nullptr;
}

// Marks of the selected columns

bool XDMElemImpl::addSelectedXPath(const KvbString& step) noexcept { return addSelectedXPath(view(step)); }

bool XDMElemImpl::addSelectedXPath(std::string_view step) noexcept {
  setBeenHere();
  if (parent_) parent_->flagSelectedChildUpwards();
  switch (selectedXPaths_.add(step)) {
    case SelectedSteps::Added::yes:
      return true;
    case SelectedSteps::Added::noMemoryForStep:
      mainImpl()->setErrorMessage(
          kvbStringFormat("Failed to allocate memory to hold XPath step '%s'.", tryToString(step).asCstr()));
      return false;
    case SelectedSteps::Added::noMemoryForList:
      mainImpl()->setErrorMessage(kvbStringFormat("Failed to capture XPath step '%s'.", tryToString(step).asCstr()));
      return false;
  }
  return false;
}

// Whoever is flagged has flagged ancestors, so the walk ends at the first one.
void XDMElemImpl::flagSelectedChildUpwards() noexcept {
  for (XDMElemImpl* element = this; element && !element->selectedChild_; element = element->parent_) {
    element->setSelectedChild();
  }
}

void XDMElemImpl::clearSelectedXPaths() noexcept {
  selectedXPaths_.clear();
  for (XDMAttrImpl* attribute = firstAttribute(); attribute; attribute = attribute->next_) {
    attribute->clearSelectedXPaths();
  }
  if (!selectedChild_) return;
  for (XDMElemImpl* child = firstChild(); child; child = child->next_) child->clearSelectedXPaths();
  selectedChild_ = false;
}

int XDMElemImpl::parentOfDecidingRow() noexcept {
  if (decidingRowDistance_ != 0 || noRowBelow_ == mainImpl()->rowMarkVersion()) return decidingRowDistance_;
  for (XDMElemImpl* child = firstChild(); child; child = child->next_) {
    if (child->decidesRow_) return decidingRowDistance_ = 1;
    const int distance = child->parentOfDecidingRow();
    if (distance != 0) return decidingRowDistance_ = distance + 1;
  }
  // A new child decides no row, so this holds until a row mark changes.
  noRowBelow_ = mainImpl()->rowMarkVersion();
  return 0;
}

// The XDM document

bool XDMElemImpl::toDOM(KvDomNode& parent) {
  const DomNames& names = domNames();
  KvDomNode node = columnInfo_.toDOM(parent, names.element);
  if (node.null()) return false;
  const char* localName = columnInfo_.getLocalName().asCstr();
  if (!node.setAttributeValue(names.occurs, occursText(maxOccurrences_))) {
    mainImpl()->setErrorMessage(
        kvbStringFormat("Unable to include 'occurs' attribute value for element '%s'.", localName));
    return false;
  }
  if (decidesRow_ && !node.setAttributeValue(names.decides, names.yes)) {
    mainImpl()->setErrorMessage(
        kvbStringFormat("Unable to include 'decides' attribute value for element '%s'.", localName));
    return false;
  }
  for (XDMNSImpl* ns = firstNamespace(); ns; ns = ns->next_) {
    if (!ns->toDOM(node)) return false;
  }
  for (XDMAttrImpl* attribute = firstAttribute(); attribute; attribute = attribute->next_) {
    if (!attribute->toDOM(node)) return false;
  }
  for (XDMElemImpl* child = firstChild(); child; child = child->next_) {
    if (!child->toDOM(node)) return false;
  }
  return true;
}

bool XDMElemImpl::fromDOM(XDMMainImpl* main, XDMElemImpl* parent, KvDomNode& node) {
  XDMColumnInfo scratch;
  scratch.setXDM(main);
  KvbString prefix;
  KvbString localName;
  if (!scratch.fromDOMQName(node, &prefix, &localName)) return false;
  bool created = false;
  XDMElemImpl* element =
      parent ? parent->createChild(prefix, localName, &created) : main->createRoot(prefix, localName);
  if (!element || !element->hasXPath()) return false;
  // The next sibling goes behind this one.
  element->setBeenHere();
  return element->read(node, prefix);
}

bool XDMElemImpl::read(KvDomNode& node, const KvbString& prefix) {
  const DomNames& names = domNames();
  if (!columnInfo_.fromDOM(node)) return false;
  if (node.getAttributeValue(names.decides).compare(names.yes, true) == 0) setDecidesRow(true);
  if (!readOccurs(node.getAttributeValue(names.occurs))) return false;
  KvDomNode firstOther;
  if (!readNamespaces(node, &firstOther)) return false;
  if (!prefix.isNull()) {
    if (XDMNSImpl* ns = lookupNamespace(prefix)) setNamespace(ns);
  }
  return readChildren(firstOther);
}

bool XDMElemImpl::readOccurs(const KvbString& occurs) {
  if (isEmpty(occurs)) return true;
  KvbDatavar value;
  value.assign(occurs);
  bool failed = false;
  // A refused text still sets the count, to 0.
  maxOccurrences_ = value.asInt(&failed);
  if (failed) mainImpl()->setErrorMessage(kvbStringFormat("occurs value '%s' is not numeric.", occurs.asCstr()));
  return !failed;
}

/** Reads all declarations, wherever they stand, so that attributes and children can refer to them. */
bool XDMElemImpl::readNamespaces(KvDomNode& node, KvDomNode* firstOther) {
  for (KvDomNode child = node.getFirstChild(false); !child.null(); child = child.getNextSibling(false)) {
    if (child.getName().compare(domNames().ns, true) == 0) {
      if (!XDMNSImpl::fromDOM(this, child)) return false;
    } else if (firstOther->null()) {
      *firstOther = child;
    }
  }
  return true;
}

bool XDMElemImpl::readChildren(KvDomNode child) {
  const DomNames& names = domNames();
  for (; !child.null(); child = child.getNextSibling(false)) {
    const KvbString name = child.getName();
    if (name.compare(names.attribute, true) == 0) {
      if (!XDMAttrImpl::fromDOM(this, child)) return false;
    } else if (name.compare(names.element, true) == 0) {
      if (!fromDOM(mainImpl(), this, child)) return false;
    }
  }
  return true;
}

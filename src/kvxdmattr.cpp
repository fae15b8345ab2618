// Attribute nodes.
// Tested by tests/unit/kvxdmattr_test.cpp.
#include "kvxdmattr.h"

#include "kvxdmdom.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmtext.h"

namespace {

constexpr char unit[] = "kvxdmattr";

}  // namespace

XDMAttrImpl::XDMAttrImpl(XDMElemImpl* parent, const KvbString& localName) noexcept
    : XDMNodeImpl(parent->mainImpl(), localName), parent_(parent) {}

XDMAttrImpl::~XDMAttrImpl() = default;

int XDMAttrImpl::nodeType() { return 0; }

XDMElement* XDMAttrImpl::getChild() { return nullptr; }

XDMNode* XDMAttrImpl::getNextSibling() { return parent_->getNextAttribute(this); }

XDMElement* XDMAttrImpl::getParent() { return parent_; }

NodeKey XDMAttrImpl::key() const noexcept {
  const XDMNSImpl* ns = implOf(columnInfo_.getNamespace());
  return {view(columnInfo_.getLocalName()), ns ? view(ns->uri()) : std::string_view(), ns != nullptr};
}

void XDMAttrImpl::setNamespace(XDMNamespace* ns) noexcept {
  parent_->attributeRenamed();
  columnInfo_.setNamespace(ns);
}

bool XDMAttrImpl::setDefault(const KvbString& value) noexcept {
  KvbString text;
  if (columnInfo_.setDefault(value, &text)) return true;
  mainImpl()->setErrorMessage(text);
  return false;
}

bool XDMAttrImpl::addSelectedXPath(const KvbString& step) noexcept { return addSelectedXPath(view(step)); }

bool XDMAttrImpl::addSelectedXPath(std::string_view step) noexcept {
  if (XDMElemImpl* aboveOwner = parent_->parent()) aboveOwner->flagSelectedChildUpwards();
  switch (selectedXPaths_.add(step)) {
    case SelectedSteps::Added::yes:
      return true;
    case SelectedSteps::Added::noMemoryForStep:
      mainImpl()->setErrorMessage(message(unit, __LINE__, 29, "(XPath Step)"));
      return false;
    case SelectedSteps::Added::noMemoryForList:
      mainImpl()->setErrorMessage(message(unit, __LINE__, 1434, "(XPath Step)", tryToString(step)));
      return false;
  }
  return false;
}

void XDMAttrImpl::clearSelectedXPaths() noexcept { selectedXPaths_.clear(); }

bool XDMAttrImpl::toDOM(KvDomNode& parent) { return !columnInfo_.toDOM(parent, domNames().attribute).null(); }

bool XDMAttrImpl::fromDOM(XDMElemImpl* parent, KvDomNode& node) {
  XDMColumnInfo scratch;
  scratch.setXDM(parent->mainImpl());
  KvbString prefix;
  KvbString localName;
  if (!scratch.fromDOMQName(node, &prefix, &localName)) return false;
  // Without "prefix" there is no namespace; an empty one asks for the default namespace.
  XDMNSImpl* ns = prefix.isNull() ? nullptr : parent->lookupNamespace(prefix);
  bool created = false;
  XDMAttrImpl* attribute = parent->createAttribute(ns, localName, &created);
  return attribute && attribute->columnInfo_.fromDOM(node);
}

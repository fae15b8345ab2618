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

XDMAttrImpl::XDMAttrImpl(XDMElemImpl* parent, const KvbString& localName) noexcept : parent_(parent) {
  columnInfo_.setXDM(parent->mainImpl());
  columnInfo_.setLocalName(localName);
}

XDMAttrImpl::~XDMAttrImpl() = default;

int XDMAttrImpl::nodeType() { return 0; }

XDMElement* XDMAttrImpl::getChild() { return nullptr; }

XDMMain* XDMAttrImpl::getMain() { return mainImpl(); }

XDMNode* XDMAttrImpl::getNextSibling() { return parent_->getNextAttribute(this); }

XDMElement* XDMAttrImpl::getParent() { return parent_; }

KvbString XDMAttrImpl::getDefault() { return columnInfo_.getDefault(); }

KvbString XDMAttrImpl::getFormat() { return columnInfo_.getFormat(); }

KvbString XDMAttrImpl::getInformat() { return columnInfo_.getInformat(); }

KvbString XDMAttrImpl::getLocalName() { return columnInfo_.getLocalName(); }

int XDMAttrImpl::getMaximumLength() { return columnInfo_.getMaximumLength(); }

XDMNamespace* XDMAttrImpl::getNamespace() { return columnInfo_.getNamespace(); }

kvbType XDMAttrImpl::getType() { return columnInfo_.getType(); }

KvbString XDMAttrImpl::getValidValue(int index) { return columnInfo_.getValidValue(index); }

int XDMAttrImpl::getValidValues() { return columnInfo_.getValidValues(); }

KvbString XDMAttrImpl::getXPath() { return columnInfo_.getXPath(); }

XDMColumn* XDMAttrImpl::selectAsColumn(const KvbString& name, bool isGroupBy) {
  return mainImpl()->selectAsColumn(this, name, isGroupBy ? 1 : 0);
}

XDMMainImpl* XDMAttrImpl::mainImpl() const noexcept { return parent_->mainImpl(); }

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

bool XDMAttrImpl::setXPath(const KvbString& xpath) {
  KvbString text;
  if (columnInfo_.setXPath(xpath, false, &text)) return true;
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

// Namespace declarations.
// Tested by tests/unit/kvxdmns_test.cpp.
#include "kvxdmns.h"

#include "kvxdmdom.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmtext.h"

namespace {

constexpr char unit[] = "kvxdmns";

}  // namespace

XDMNSImpl::XDMNSImpl(XDMElemImpl* parent, const KvbString& prefix, const KvbString& uri) noexcept
    : parent_(parent), prefix_(prefix), uri_(uri) {}

XDMNSImpl::XDMNSImpl(XDMElemImpl* parent) noexcept : parent_(parent) {}

XDMNSImpl::~XDMNSImpl() = default;

XDMNamespace* XDMNSImpl::getNextSibling() { return parent_ ? parent_->getNextNamespace(this) : nullptr; }

XDMElement* XDMNSImpl::getParent() { return parent_; }

KvbString XDMNSImpl::getPrefix() { return prefix_; }

KvbString XDMNSImpl::getURI() { return uri_; }

bool XDMNSImpl::toDOM(KvDomNode& parent) {
  const DomNames& names = domNames();
  XDMMainImpl* main = parent_->mainImpl();
  const bool isDefault = isEmpty(prefix_);
  KvDomNode node = parent.addChild(names.ns);
  if (node.null()) {
    main->setErrorMessage(message(unit, __LINE__, 1438, names.ns, isDefault ? names.defaultNamespace : prefix_));
    return false;
  }
  if (!node.setAttributeValue(names.prefix, prefix_)) {
    main->setErrorMessage(isDefault ? message(unit, __LINE__, 1432, names.defaultNamespace)
                                    : message(unit, __LINE__, 1438, names.ns, prefix_));
    return false;
  }
  if (!node.setAttributeValue(names.uri, uri_)) {
    main->setErrorMessage(message(unit, __LINE__, 1438, names.ns, uri_));
    return false;
  }
  return true;
}

bool XDMNSImpl::fromDOM(XDMElemImpl* parent, KvDomNode& node) {
  const DomNames& names = domNames();
  return parent->createNamespace(node.getAttributeValue(names.prefix), node.getAttributeValue(names.uri)) != nullptr;
}

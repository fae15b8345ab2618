// Selected columns.
// Tested by tests/unit/kvxdmcol_test.cpp.
#include "kvxdmcol.h"

#include "kvxdmattr.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmtext.h"

namespace {

constexpr kvbType characterString = 4;

/** The record of the library's own node. */
const XDMColumnInfo& infoOf(XDMNode* node) noexcept {
  return node->nodeType() == 0 ? static_cast<XDMAttrImpl*>(node)->columnInfo()
                               : static_cast<XDMElemImpl*>(node)->columnInfo();
}

KvbString firstNotEmpty(const KvbString& own, const KvbString& ofNode) noexcept { return isEmpty(own) ? ofNode : own; }

}  // namespace

XDMColumnImpl::XDMColumnImpl(XDMMainImpl* main, XDMNode* node, const KvbString& name, int isGroupBy) noexcept
    : main_(main), node_(node), name_(name), isGroupBy_(isGroupBy) {
  columnInfo_.setXDM(main);
  columnInfo_.setType(node->getType());
}

XDMColumnImpl::~XDMColumnImpl() { main_->unregisterColumn(this); }

KvbString XDMColumnImpl::getDefault() { return firstNotEmpty(columnInfo_.getDefault(), node_->getDefault()); }

KvbString XDMColumnImpl::getFormat() { return firstNotEmpty(columnInfo_.getFormat(), node_->getFormat()); }

KvbString XDMColumnImpl::getInformat() { return firstNotEmpty(columnInfo_.getInformat(), node_->getInformat()); }

int XDMColumnImpl::getIsGroupBy() { return isGroupBy_; }

int XDMColumnImpl::getMaximumLength() {
  if (columnInfo_.getType() != characterString) return 0;
  const int own = columnInfo_.getMaximumLength();
  return own != 0 ? own : node_->getMaximumLength();
}

KvbString XDMColumnImpl::getName() { return name_; }

XDMNode* XDMColumnImpl::getNode() { return node_; }

kvbType XDMColumnImpl::getType() { return columnInfo_.getType(); }

KvbString XDMColumnImpl::getValidValue(int index) {
  return columnInfo_.getValidValues() == 0 ? node_->getValidValue(index) : columnInfo_.getValidValue(index);
}

int XDMColumnImpl::getValidValues() {
  const int own = columnInfo_.getValidValues();
  return own != 0 ? own : node_->getValidValues();
}

KvbString XDMColumnImpl::getXPath() { return xpath(); }

const KvbString& XDMColumnImpl::xpath() const noexcept {
  return isEmpty(columnInfo_.getXPath()) ? infoOf(node_).getXPath() : columnInfo_.getXPath();
}

bool XDMColumnImpl::addValidValue(const KvbString& value, KvbString* error) {
  // The node's values would no longer show through once the column has one of its own.
  if (columnInfo_.getValidValues() == 0 && !copyValidValuesOfNode(error)) return false;
  return columnInfo_.addValidValue(value, error);
}

bool XDMColumnImpl::copyValidValuesOfNode(KvbString* error) {
  for (int i = 0; i < node_->getValidValues(); ++i) {
    if (!columnInfo_.addValidValue(node_->getValidValue(i), error)) return false;
  }
  return true;
}

bool XDMColumnImpl::setDefault(const KvbString& value, KvbString* error) {
  return columnInfo_.setDefault(value, error);
}

void XDMColumnImpl::setFormat(const KvbString& format) { columnInfo_.setFormat(format); }

void XDMColumnImpl::setInformat(const KvbString& informat) { columnInfo_.setInformat(informat); }

void XDMColumnImpl::setIsGroupBy(bool isGroupBy) { isGroupBy_ = isGroupBy ? 1 : 0; }

void XDMColumnImpl::setMaximumLength(int length) { columnInfo_.setMaximumLength(length); }

void XDMColumnImpl::setName(const KvbString& name) { name_ = name; }

void XDMColumnImpl::setType(kvbType type) { columnInfo_.setType(type); }

bool XDMColumnImpl::setXPath(const KvbString& xpath, KvbString* error) {
  return guarded(main_, "(XPath step)", error, false, [&] { return columnInfo_.setXPath(xpath, true, error); });
}

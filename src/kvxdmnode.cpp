// What elements and attributes have in common.
// Tested by tests/unit/kvxdmelem_test.cpp and tests/unit/kvxdmattr_test.cpp.
#include "kvxdmnode.h"

#include "kvxdmmain.h"

template <class Interface>
XDMNodeImpl<Interface>::XDMNodeImpl(XDMMainImpl* main, const KvbString& localName) noexcept {
  columnInfo_.setXDM(main);
  columnInfo_.setLocalName(localName);
}

template <class Interface>
XDMMain* XDMNodeImpl<Interface>::getMain() {
  return mainImpl();
}

template <class Interface>
KvbString XDMNodeImpl<Interface>::getDefault() {
  return columnInfo_.getDefault();
}

template <class Interface>
KvbString XDMNodeImpl<Interface>::getFormat() {
  return columnInfo_.getFormat();
}

template <class Interface>
KvbString XDMNodeImpl<Interface>::getInformat() {
  return columnInfo_.getInformat();
}

template <class Interface>
KvbString XDMNodeImpl<Interface>::getLocalName() {
  return columnInfo_.getLocalName();
}

template <class Interface>
int XDMNodeImpl<Interface>::getMaximumLength() {
  return columnInfo_.getMaximumLength();
}

template <class Interface>
XDMNamespace* XDMNodeImpl<Interface>::getNamespace() {
  return columnInfo_.getNamespace();
}

template <class Interface>
kvbType XDMNodeImpl<Interface>::getType() {
  return columnInfo_.getType();
}

template <class Interface>
KvbString XDMNodeImpl<Interface>::getValidValue(int index) {
  return columnInfo_.getValidValue(index);
}

template <class Interface>
int XDMNodeImpl<Interface>::getValidValues() {
  return columnInfo_.getValidValues();
}

template <class Interface>
KvbString XDMNodeImpl<Interface>::getXPath() {
  return columnInfo_.getXPath();
}

template <class Interface>
XDMColumn* XDMNodeImpl<Interface>::selectAsColumn(const KvbString& name, bool isGroupBy) {
  return mainImpl()->selectAsColumn(this, name, isGroupBy ? 1 : 0);
}

template <class Interface>
bool XDMNodeImpl<Interface>::setXPath(const KvbString& xpath) {
  KvbString text;
  if (columnInfo_.setXPath(xpath, false, &text)) return true;
  mainImpl()->setErrorMessage(text);
  return false;
}

template class XDMNodeImpl<XDMAttribute>;
template class XDMNodeImpl<XDMElement>;

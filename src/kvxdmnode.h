// What elements and attributes have in common.
// Tested by tests/unit/kvxdmelem_test.cpp and tests/unit/kvxdmattr_test.cpp.
#ifndef KVXDM_SRC_KVXDMNODE_H
#define KVXDM_SRC_KVXDMNODE_H

#include <kvxdm/kvxdm.h>

#include "kvxdmcinfo.h"

/** A node of the model: `Interface` as far as the property record answers it. */
template <class Interface>
class XDMNodeImpl : public Interface {
 public:
  XDMNodeImpl(const XDMNodeImpl&) = delete;
  XDMNodeImpl& operator=(const XDMNodeImpl&) = delete;

  // XDMNode
  XDMMain* getMain() override;
  KvbString getDefault() override;
  KvbString getFormat() override;
  KvbString getInformat() override;
  KvbString getLocalName() override;
  int getMaximumLength() override;
  XDMNamespace* getNamespace() override;
  kvbType getType() override;
  KvbString getValidValue(int index) override;
  int getValidValues() override;
  KvbString getXPath() override;
  XDMColumn* selectAsColumn(const KvbString& name, bool isGroupBy) override;

  XDMMainImpl* mainImpl() const noexcept { return columnInfo_.main(); }
  XDMColumnInfo& columnInfo() noexcept { return columnInfo_; }
  const XDMColumnInfo& columnInfo() const noexcept { return columnInfo_; }

  /** Stores the XPath without validation; on false the text goes to the main object's error message. */
  bool setXPath(const KvbString& xpath);

 protected:
  XDMNodeImpl(XDMMainImpl* main, const KvbString& localName) noexcept;
  ~XDMNodeImpl() = default;

  XDMColumnInfo columnInfo_;
};

extern template class XDMNodeImpl<XDMAttribute>;
extern template class XDMNodeImpl<XDMElement>;

#endif

// Selected columns.
// Tested by tests/unit/kvxdmcol_test.cpp.
#ifndef KVXDM_SRC_KVXDMCOL_H
#define KVXDM_SRC_KVXDMCOL_H

#include <kvxdm/kvxdm.h>

#include "kvxdmcinfo.h"

class XDMMainImpl;

/** A column selected from a node. Its own properties hide the node's, as each getter of the interface says. */
class XDMColumnImpl final : public XDMColumn {
 public:
  XDMColumnImpl(XDMMainImpl* main, XDMNode* node, const KvbString& name, int isGroupBy) noexcept;
  XDMColumnImpl(const XDMColumnImpl&) = delete;
  XDMColumnImpl& operator=(const XDMColumnImpl&) = delete;

  // XDMColumn
  KvbString getDefault() override;
  KvbString getFormat() override;
  KvbString getInformat() override;
  int getIsGroupBy() override;
  int getMaximumLength() override;
  KvbString getName() override;
  XDMNode* getNode() override;
  kvbType getType() override;
  KvbString getValidValue(int index) override;
  int getValidValues() override;
  KvbString getXPath() override;
  bool addValidValue(const KvbString& value, KvbString* error) override;
  bool setDefault(const KvbString& value, KvbString* error) override;
  void setFormat(const KvbString& format) override;
  void setInformat(const KvbString& informat) override;
  void setIsGroupBy(bool isGroupBy) override;
  void setMaximumLength(int length) override;
  void setName(const KvbString& name) override;
  void setType(kvbType type) override;
  bool setXPath(const KvbString& xpath, KvbString* error) override;

  // What the getters of the same names return, without a copy
  const KvbString& name() const noexcept { return name_; }
  XDMNode* node() const noexcept { return node_; }
  const KvbString& xpath() const noexcept;

  /** Takes the column out of its main object. */
  virtual ~XDMColumnImpl();

 private:
  bool copyValidValuesOfNode(KvbString* error);

  XDMMainImpl* main_;
  XDMNode* node_;
  KvbString name_;
  XDMColumnInfo columnInfo_;
  int isGroupBy_;
};

#endif

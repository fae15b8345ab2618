// Attribute nodes.
// Tested by tests/unit/kvxdmattr_test.cpp.
#ifndef KVXDM_SRC_KVXDMATTR_H
#define KVXDM_SRC_KVXDMATTR_H

#include <string_view>

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

#include "kvxdmcinfo.h"
#include "kvxdmindex.h"
#include "kvxdmselected.h"

class XDMElemImpl;

/** An attribute of the model, owned by the element that carries it. */
class XDMAttrImpl final : public XDMAttribute {
 public:
  XDMAttrImpl(XDMElemImpl* parent, const KvbString& localName) noexcept;
  XDMAttrImpl(const XDMAttrImpl&) = delete;
  XDMAttrImpl& operator=(const XDMAttrImpl&) = delete;

  // XDMNode
  int nodeType() override;
  XDMElement* getChild() override;
  XDMMain* getMain() override;
  XDMNode* getNextSibling() override;
  XDMElement* getParent() override;
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

  virtual ~XDMAttrImpl();

  XDMElemImpl* parent() const noexcept { return parent_; }
  XDMMainImpl* mainImpl() const noexcept;
  XDMColumnInfo& columnInfo() noexcept { return columnInfo_; }
  const XDMColumnInfo& columnInfo() const noexcept { return columnInfo_; }

  void setNamespace(XDMNamespace* ns) noexcept;

  /** Stores the default; on false the text goes to the main object's error message. */
  bool setDefault(const KvbString& value) noexcept;

  /** Stores the XPath without validation; on false the text goes to the main object's error message. */
  bool setXPath(const KvbString& xpath);

  int getSelectedXPaths() const noexcept { return selectedXPaths_.getCount(); }
  std::string_view getSelectedXPath(int index) const noexcept { return selectedXPaths_.get(index); }

  /**
   * Records `step` and flags the proper ancestors of the owning element as having a selected child. The owning element
   * itself is not flagged. False with the main object's error message set.
   */
  bool addSelectedXPath(std::string_view step) noexcept;
  bool addSelectedXPath(const KvbString& step) noexcept;

  void clearSelectedXPaths() noexcept;

  /** Writes this attribute under `parent`. False with the main object's error message set. */
  bool toDOM(KvDomNode& parent);

  /** Reads an attribute from `node` and makes it on `parent`. False with the main object's error message set. */
  static bool fromDOM(XDMElemImpl* parent, KvDomNode& node);

  /** What tells this attribute apart from the others of its element. */
  NodeKey key() const noexcept;

 private:
  friend class XDMElemImpl;

  XDMElemImpl* parent_;
  XDMColumnInfo columnInfo_;
  SelectedSteps selectedXPaths_;
  XDMAttrImpl* next_ = nullptr;
};

#endif

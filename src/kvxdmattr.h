// Attribute nodes.
// Tested by tests/unit/kvxdmattr_test.cpp.
#ifndef KVXDM_SRC_KVXDMATTR_H
#define KVXDM_SRC_KVXDMATTR_H

#include <string_view>

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

#include "kvxdmindex.h"
#include "kvxdmnode.h"
#include "kvxdmselected.h"

class XDMElemImpl;

/** An attribute of the model, owned by the element that carries it. */
class XDMAttrImpl final : public XDMNodeImpl<XDMAttribute> {
 public:
  XDMAttrImpl(XDMElemImpl* parent, const KvbString& localName) noexcept;

  // XDMNode
  int nodeType() override;
  XDMElement* getChild() override;
  XDMNode* getNextSibling() override;
  XDMElement* getParent() override;

  virtual ~XDMAttrImpl();

  XDMElemImpl* parent() const noexcept { return parent_; }

  void setNamespace(XDMNamespace* ns) noexcept;

  /** Stores the default; on false the text goes to the main object's error message. */
  bool setDefault(const KvbString& value) noexcept;

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
  SelectedSteps selectedXPaths_;
  XDMAttrImpl* next_ = nullptr;
};

#endif

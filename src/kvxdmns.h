// Namespace declarations.
// Tested by tests/unit/kvxdmns_test.cpp.
#ifndef KVXDM_SRC_KVXDMNS_H
#define KVXDM_SRC_KVXDMNS_H

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

#include "kvxdmindex.h"
#include "kvxdmtext.h"

class XDMElemImpl;

/** A namespace declaration: made on an element, or without parent in the main object's namespace list. */
class XDMNSImpl final : public XDMNamespace {
 public:
  XDMNSImpl(XDMElemImpl* parent, const KvbString& prefix, const KvbString& uri) noexcept;

  /** A declaration with null prefix and URI. */
  explicit XDMNSImpl(XDMElemImpl* parent) noexcept;

  XDMNSImpl(const XDMNSImpl&) = delete;
  XDMNSImpl& operator=(const XDMNSImpl&) = delete;

  // XDMNamespace
  XDMNamespace* getNextSibling() override;
  XDMElement* getParent() override;
  KvbString getPrefix() override;
  KvbString getURI() override;

  virtual ~XDMNSImpl();

  const KvbString& prefix() const noexcept { return prefix_; }
  const KvbString& uri() const noexcept { return uri_; }

  /** What tells this declaration apart from the others of its element. */
  NodeKey key() const noexcept { return {view(prefix_), {}}; }

  /** Writes this declaration under `parent`. False with the main object's error message set. */
  bool toDOM(KvDomNode& parent);

  /** Reads a declaration from `node` and makes it on `parent`. False with the main object's error message set. */
  static bool fromDOM(XDMElemImpl* parent, KvDomNode& node);

 private:
  friend class XDMElemImpl;

  XDMElemImpl* parent_;
  KvbString prefix_;
  KvbString uri_;
  XDMNSImpl* next_ = nullptr;
};

/** The library's own declaration behind the interface; null for null. */
inline XDMNSImpl* implOf(XDMNamespace* ns) noexcept { return static_cast<XDMNSImpl*>(ns); }

#endif

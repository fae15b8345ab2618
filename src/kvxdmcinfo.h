// The property record that every element, attribute and column carries.
// Tested by tests/unit/kvxdmcinfo_test.cpp.
#ifndef KVXDM_SRC_KVXDMCINFO_H
#define KVXDM_SRC_KVXDMCINFO_H

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

class XDMElemImpl;
class XDMMainImpl;

/** Name, namespace, XPath and column properties of a node or a column. It owns its valid values and nothing else. */
class XDMColumnInfo {
 public:
  XDMColumnInfo() noexcept = default;
  ~XDMColumnInfo();
  XDMColumnInfo(const XDMColumnInfo&) = delete;
  XDMColumnInfo& operator=(const XDMColumnInfo&) = delete;

  void setXDM(XDMMainImpl* main) noexcept { main_ = main; }
  XDMMainImpl* main() const noexcept { return main_; }

  void setLocalName(const KvbString& localName) noexcept { localName_ = localName; }
  const KvbString& getLocalName() const noexcept { return localName_; }

  void setNamespace(XDMNamespace* ns) noexcept { namespace_ = ns; }
  XDMNamespace* getNamespace() const noexcept { return namespace_; }

  const KvbString& getXPath() const noexcept { return xpath_; }

  void setType(kvbType type) noexcept { type_ = type; }
  kvbType getType() const noexcept { return type_; }

  /** Stores the length as given. */
  void setMaximumLength(int length) noexcept { maximumLength_ = length; }
  /** The stored length for a character string, 0 for every other type. */
  int getMaximumLength() const noexcept;

  void setFormat(const KvbString& format) noexcept { format_ = format; }
  const KvbString& getFormat() const noexcept { return format_; }

  void setInformat(const KvbString& informat) noexcept { informat_ = informat; }
  const KvbString& getInformat() const noexcept { return informat_; }

  const KvbString& getDefault() const noexcept { return default_; }

  int getValidValues() const noexcept { return validValues_.getCount(); }
  /** A copy of the valid value at `index`, empty out of range. */
  KvbString getValidValue(int index) const noexcept;

  /**
   * Stores `xpath`. With `validate` its steps must lead from the root down the tree (a last "@" step is not looked up);
   * otherwise the old XPath stays and `*error` receives message 1425, 1445 or 29.
   */
  bool setXPath(const KvbString& xpath, bool validate, KvbString* error);

  /** Stores the default if there are no valid values or it is one of them. A refusal is silent; callers report it. */
  bool setDefault(const KvbString& value, KvbString* error) noexcept;

  /** Appends a copy of `value`. On false `*error` receives message 29 or 1434. */
  bool addValidValue(const KvbString& value, KvbString* error) noexcept;

  /** Adds a child `elementName` with the name, prefix and URI under `parent`; null on failure, with the main object's
   * error message set. */
  KvDomNode toDOM(KvDomNode& parent, const KvbString& elementName);

  /** Reads the local name if it is not set yet. Failure as for fromDOMQName. */
  bool fromDOM(KvDomNode& node);

  /** Reads "name" and "prefix" (null when absent). False, with the main object's error message set, without "name". */
  bool fromDOMQName(KvDomNode& node, KvbString* prefix, KvbString* localName);

 private:
  bool leadsThroughTree(const KvbString& xpath, KvbString* error) const;
  /** Counts in `*matched` the steps that match elements, from the root down. False when memory is exhausted. */
  bool matchSteps(const KvbString* steps, int count, int* matched) const;
  /** Writes name, prefix and URI; the number of the message that says what failed, or 0. */
  int writeName(KvDomNode& node) const;

  XDMMainImpl* main_ = nullptr;
  KvbString localName_;
  XDMNamespace* namespace_ = nullptr;
  KvbString xpath_;
  kvbType type_ = 0;
  int maximumLength_ = 0;
  KvbString format_;
  KvbString informat_;
  KvbString default_;
  XDMList validValues_;
};

#endif

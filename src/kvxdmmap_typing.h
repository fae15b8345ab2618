// The typing of an XMLMap's columns: type, length, format, informat, default and valid values.
// Tested by tests/unit/kvxdmmap_typing_test.cpp.
#ifndef KVXDM_SRC_KVXDMMAP_TYPING_H
#define KVXDM_SRC_KVXDMMAP_TYPING_H

#include <cstddef>
#include <memory>
#include <span>

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

class XDMMainImpl;

namespace xmlmap {

/** The properties that one "COLUMN" gives its column. Failures leave their text in the main object's error message. */
class ColumnTyping {
 public:
  explicit ColumnTyping(XDMMainImpl* main) noexcept : main_(main) {}

  /** Reads one child of the "COLUMN", "PATH" apart. False when it or its value is not known. */
  bool read(const KvDomNode& child);

  /** Whether what was read is complete and fits together. */
  bool check() const;

  /** Gives the column `xpath` and the properties. */
  bool apply(XDMColumn* column, const KvbString& xpath) const;

 private:
  bool readDataType(const KvDomNode& node);
  bool readDefault(const KvDomNode& node);
  bool readEnumeration(const KvDomNode& node);
  bool readFormat(const KvDomNode& node);
  bool readInformat(const KvDomNode& node);
  bool readPattern(const KvDomNode& node, KvbString* target);
  bool readLength(const KvDomNode& node);
  bool readType(const KvDomNode& node);

  std::span<const KvbString> validValues() const;
  bool isValidValue(const KvbString& value) const;
  bool applyTo(XDMColumn* column, const KvbString& xpath, KvbString* error) const;

  XDMMainImpl* main_;
  kvbType type_ = 0;
  int maximumLength_ = -1;
  KvbString format_;
  KvbString informat_;
  KvbString default_;
  std::unique_ptr<KvbString[]> validValues_;
  std::size_t validValueCount_ = 0;
};

}  // namespace xmlmap

#endif

// The names of the XDM document's elements and attributes.
#ifndef KVXDM_SRC_KVXDMDOM_H
#define KVXDM_SRC_KVXDMDOM_H

#include <kvxbase/kvbstring.h>

/** The names as the DOM service takes them, made once. */
struct DomNames {
  // elements
  const KvbString xdm{"xdm", true};
  const KvbString element{"element", true};
  const KvbString attribute{"attribute", true};
  const KvbString ns{"namespace", true};
  // attributes
  const KvbString version{"version", true};
  const KvbString name{"name", true};
  const KvbString prefix{"prefix", true};
  const KvbString uri{"uri", true};
  const KvbString occurs{"occurs", true};
  const KvbString decides{"decides", true};
  // values
  const KvbString supportedVersion{"1.0", true};
  const KvbString yes{"true", true};
  const KvbString once{"1", true};
  // how messages call a declaration without prefix
  const KvbString defaultNamespace{"default namespace", true};
};

/** Throws std::bad_alloc when memory is exhausted at the first call; a later call tries again. */
inline const DomNames& domNames() {
  static const DomNames names;
  return names;
}

#endif

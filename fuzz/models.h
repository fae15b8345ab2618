// Models that leave nothing behind, and what must hold for every one of them.
#ifndef KVXDM_FUZZ_MODELS_H
#define KVXDM_FUZZ_MODELS_H

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "model.h"

struct WholeRelease {
  void operator()(XDMMainImpl* main) const {
    freeModel(*main);
    main->release();
  }
};

/** A main object as a host makes it. Columns and tree end with it, so that a run of many inputs does not grow. */
using MainPtr = std::unique_ptr<XDMMainImpl, WholeRelease>;

inline MainPtr makeMain(unsigned flags = 0) { return MainPtr(static_cast<XDMMainImpl*>(kvxdmCreateMain(flags))); }

/** The model as an XDM document. */
inline std::string saved(XDMMainImpl& main) {
  KvbString xml, error;
  EXPECT_TRUE(main.saveToXML(&xml, &error)) << str(error);
  EXPECT_TRUE(error.isNull()) << str(error);
  return str(xml);
}

inline std::string savedAgain(const std::string& document) {
  MainPtr main = makeMain();
  KvbString error;
  EXPECT_TRUE(main->loadFromXML(kv(document), &error)) << str(error) << "\n" << document;
  return saved(*main);
}

/** Whether the document of the subtree can be read: a map can give empty names, and one level more than documents. */
inline bool canBeRead(const XDMElemImpl& element, int depth = 1) {
  if (isEmpty(element.columnInfo().getLocalName()) || depth == XDMElemImpl::deepest) return false;
  for (const XDMAttrImpl* each = element.firstAttribute(); each; each = XDMElemImpl::next(each)) {
    if (isEmpty(each->columnInfo().getLocalName())) return false;
  }
  for (const XDMElemImpl* child = element.firstChild(); child; child = child->nextSibling()) {
    if (!canBeRead(*child, depth + 1)) return false;
  }
  return true;
}

/** Whether a look-up of the namespace's prefix on `scope` leads to the namespace. */
inline bool isFound(XDMElemImpl& scope, XDMNamespace* ns) {
  return !ns || scope.lookupNamespace(implOf(ns)->prefix()) == ns;
}

/** Whether no two children share a key, so that none will be merged. */
inline bool hasDistinctChildren(const XDMElemImpl& element) {
  for (const XDMElemImpl* child = element.firstChild(); child; child = child->nextSibling()) {
    for (const XDMElemImpl* other = child->nextSibling(); other; other = other->nextSibling()) {
      if (child->key() == other->key()) return false;
    }
  }
  return true;
}

/** Whether loading makes this very subtree of its document again: nothing to merge, no namespace out of reach. */
inline bool isAsLoaded(XDMElemImpl& element) {
  if (!isFound(element, element.columnInfo().getNamespace()) || !hasDistinctChildren(element)) return false;
  for (const XDMAttrImpl* each = element.firstAttribute(); each; each = XDMElemImpl::next(each)) {
    if (!isFound(element, each->columnInfo().getNamespace())) return false;
  }
  for (XDMElemImpl* child = element.firstChild(); child; child = child->nextSibling()) {
    if (!isAsLoaded(*child)) return false;
  }
  return true;
}

/**
 * Saving, loading and saving again gives the same bytes. Where loading has namesakes to merge, or prefixes that now
 * lead to another declaration, it takes two rounds until nothing changes any more.
 */
inline void expectSavesTheSame(XDMMainImpl& main) {
  const std::string first = saved(main);
  EXPECT_EQ(saved(main), first);
  if (!canBeRead(*main.root())) return;
  const std::string second = savedAgain(first);
  if (isAsLoaded(*main.root())) {
    EXPECT_EQ(second, first);
  } else {
    const std::string settled = savedAgain(second);
    EXPECT_EQ(savedAgain(settled), settled);
  }
}

#endif

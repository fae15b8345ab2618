// Builders of small models from the library's own nodes.
#ifndef KVXDM_TESTS_MODEL_H
#define KVXDM_TESTS_MODEL_H

#include <string>
#include <vector>

#include "kvxdmattr.h"
#include "kvxdmcol.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmns.h"
#include "texts.h"

/** Frees the columns and the tree, which a main object by itself leaves behind. */
inline void freeModel(XDMMainImpl& main) {
  while (XDMColumnImpl* column = main.column(0)) main.removeColumn(column);
  delete main.root();
}

/** A main object with a root. Columns and tree end with it. */
class Model {
 public:
  explicit Model(const char* rootName = "a", const char* rootPrefix = "")
      : root(main.createRoot(kv(rootPrefix), kv(rootName))) {}
  ~Model() { freeModel(main); }
  Model(const Model&) = delete;
  Model& operator=(const Model&) = delete;

  std::string error() const { return str(main.errorMessage()); }

  XDMMainImpl main{0};
  XDMElemImpl* root;
};

/** The child of that name, made behind the others when it is not there. */
inline XDMElemImpl* addChild(XDMElemImpl* parent, const char* name, const char* prefix = "") {
  bool created = false;
  XDMElemImpl* child = parent->createChild(kv(prefix), kv(name), &created);
  child->setBeenHere();
  return child;
}

/** A new child of that name, which no path has visited yet. */
inline XDMElemImpl* addUnvisitedChild(XDMElemImpl* parent, const char* name) {
  bool created = false;
  return parent->createChild(kv(""), kv(name), &created);
}

inline XDMAttrImpl* addAttribute(XDMElemImpl* parent, const char* name, XDMNamespace* ns = nullptr) {
  bool created = false;
  return parent->createAttribute(ns, kv(name), &created);
}

/** The local names of the children, in order. */
inline std::vector<std::string> childNames(XDMElement* parent) {
  std::vector<std::string> names;
  for (XDMNode* child = parent->getChild(); child; child = child->getNextSibling()) {
    names.push_back(str(child->getLocalName()));
  }
  return names;
}

#endif

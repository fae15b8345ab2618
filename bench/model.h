// Models for the benchmarks, made as a host makes them.
#ifndef KVXDM_BENCH_MODEL_H
#define KVXDM_BENCH_MODEL_H

#include <kvxdm/kvxdm.h>

#include <string>
#include <vector>

#include "case.h"
#include "texts.h"

inline XDMMainPtr loadModel(const KvbString& document) {
  XDMMainPtr model(kvxdmCreateMain(0));
  KvbString error;
  require(model->loadFromXML(document, &error), error);
  return model;
}

inline XDMMainPtr importMap(const std::string& file, const std::string& groupBy = "") {
  XDMMainPtr model(kvxdmCreateMain(0));
  KvbString error;
  require(model->createFromXMLMap(kv(file), KvbString(), kv(groupBy), 0, &error), error);
  return model;
}

inline KvbString toRowsQuery(XDMMain& model) {
  KvbString error;
  KvbString query = model.genXQueryToColumns(true, false, true, false, &error);
  require(query.length() > 0, error);
  return query;
}

inline KvbString fromRowsQuery(XDMMain& model, bool groupRows) {
  KvbString error;
  KvbString query = model.genXQueryFromColumns(true, groupRows, &error);
  require(query.length() > 0, error);
  return query;
}

/** Calls `visit` for `element` and all below it: an element, its attributes, its children. */
template <class Visit>
void forEachNode(XDMElement* element, const Visit& visit) {
  visit(element);
  for (XDMNode* attribute = element->getNextAttribute(nullptr); attribute; attribute = attribute->getNextSibling()) {
    visit(attribute);
  }
  for (XDMNode* child = element->getChild(); child; child = child->getNextSibling()) {
    forEachNode(static_cast<XDMElement*>(child), visit);
  }
}

inline std::vector<XDMNode*> nodesOf(XDMMain& model) {
  std::vector<XDMNode*> nodes;
  forEachNode(model.getRootNode(), [&](XDMNode* node) { nodes.push_back(node); });
  return nodes;
}

#endif

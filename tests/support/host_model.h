// Works with a model through the interfaces only, as a host does.
#ifndef KVXDM_TESTS_HOST_MODEL_H
#define KVXDM_TESTS_HOST_MODEL_H

#include <kvxdm/kvxdm.h>

#include <stdexcept>
#include <string>
#include <string_view>

#include "texts.h"

/** The node with that XPath at or below `element`: the element, its attributes, its children; null without one. */
inline XDMNode* findNode(XDMElement* element, const std::string& xpath) {
  if (str(element->getXPath()) == xpath) return element;
  for (XDMAttribute* attribute = element->getNextAttribute(nullptr); attribute;
       attribute = element->getNextAttribute(attribute)) {
    if (str(attribute->getXPath()) == xpath) return attribute;
  }
  for (XDMNode* child = element->getChild(); child; child = child->getNextSibling()) {
    if (XDMNode* found = findNode(static_cast<XDMElement*>(child), xpath)) return found;
  }
  return nullptr;
}

/** The node with that XPath in the model. Throws std::runtime_error without one. */
inline XDMNode* nodeAt(XDMMain* main, const std::string& xpath) {
  XDMElement* root = main->getRootNode();
  XDMNode* node = root ? findNode(root, xpath) : nullptr;
  if (!node) throw std::runtime_error("no node " + xpath);
  return node;
}

inline XDMElement* elementAt(XDMMain* main, const std::string& xpath) {
  return static_cast<XDMElement*>(nodeAt(main, xpath));
}

/** A model filled from the text of an XDM document. Throws std::runtime_error when it is refused. */
inline XDMMainPtr loadModel(std::string_view document, unsigned int flags = 0) {
  XDMMainPtr main(kvxdmCreateMain(flags));
  KvbString error;
  if (!main->loadFromXML(kv(document), &error)) throw std::runtime_error(str(error));
  return main;
}

/** Selects the node with that XPath. Throws std::runtime_error when it is refused. */
inline XDMColumn* selectColumn(XDMMain* main, const std::string& xpath, const std::string& name,
                               bool isGroupBy = false) {
  XDMColumn* column = nodeAt(main, xpath)->selectAsColumn(kv(name), isGroupBy);
  if (!column) throw std::runtime_error("cannot select " + xpath);
  return column;
}

#endif

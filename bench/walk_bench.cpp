// Walking every node of a model through the interfaces.
#include <deque>
#include <memory>

#include "case.h"
#include "model.h"
#include "shapes.h"

namespace {

// --- The floor: the same tree as plain structures

struct PlainNode {
  bool isElement;
  bool decidesRow;
  int type, maximumLength, maxOccurrences, namespaces, validValues;
  KvbString defaultValue, format, informat, localName, xpath;
  PlainNode* parent;
  PlainNode* firstAttribute = nullptr;
  PlainNode* firstChild = nullptr;
  PlainNode* next = nullptr;
};

class PlainTree {
 public:
  explicit PlainTree(XDMMain& model) { addElement(model.getRootNode(), nullptr); }

  const PlainNode& root() const { return nodes_.front(); }

 private:
  PlainNode* add(XDMNode* node, PlainNode* parent) {
    PlainNode plain{};
    plain.isElement = node->nodeType() == 1;
    plain.type = node->getType();
    plain.maximumLength = node->getMaximumLength();
    plain.validValues = node->getValidValues();
    plain.defaultValue = node->getDefault();
    plain.format = node->getFormat();
    plain.informat = node->getInformat();
    plain.localName = node->getLocalName();
    plain.xpath = node->getXPath();
    plain.parent = parent;
    return &nodes_.emplace_back(plain);
  }

  PlainNode* addElement(XDMElement* element, PlainNode* parent) {
    PlainNode* plain = add(element, parent);
    plain->decidesRow = element->getDecidesRow();
    plain->maxOccurrences = element->getMaxOccurrences();
    plain->namespaces = element->getNamespaces();
    PlainNode** end = &plain->firstAttribute;
    for (XDMNode* node = element->getNextAttribute(nullptr); node; node = node->getNextSibling()) {
      *end = add(node, plain);
      end = &(*end)->next;
    }
    end = &plain->firstChild;
    for (XDMNode* node = element->getChild(); node; node = node->getNextSibling()) {
      *end = addElement(static_cast<XDMElement*>(node), plain);
      end = &(*end)->next;
    }
    return plain;
  }

  std::deque<PlainNode> nodes_;
};

long readPlain(const PlainNode& node) {
  const KvbString strings[] = {node.defaultValue, node.format, node.informat, node.localName, node.xpath};
  long sum = node.isElement + node.decidesRow + node.type + node.maximumLength + node.maxOccurrences + node.namespaces +
             node.validValues + (node.parent != nullptr);
  for (const KvbString& string : strings) sum += string.length();
  return sum;
}

long walkPlain(const PlainNode& node) {
  long sum = readPlain(node);
  for (const PlainNode* attribute = node.firstAttribute; attribute; attribute = attribute->next) {
    sum += readPlain(*attribute);
  }
  for (const PlainNode* child = node.firstChild; child; child = child->next) sum += walkPlain(*child);
  return sum;
}

// --- The walk

long readNode(XDMNode* node) {
  const KvbString strings[] = {node->getDefault(), node->getFormat(), node->getInformat(), node->getLocalName(),
                               node->getXPath()};
  long sum = node->nodeType() + node->getType() + node->getMaximumLength() + node->getValidValues() +
             (node->getParent() != nullptr) + (node->getMain() != nullptr) + (node->getNamespace() != nullptr);
  for (const KvbString& string : strings) sum += string.length();
  return sum;
}

long readElement(XDMElement* element) {
  return readNode(element) + element->getDecidesRow() + element->getMaxOccurrences() + element->getNamespaces();
}

long walk(XDMElement* element) {
  long sum = readElement(element);
  for (XDMAttribute* attribute = element->getNextAttribute(nullptr); attribute;
       attribute = element->getNextAttribute(attribute)) {
    sum += readNode(attribute);
  }
  for (XDMNode* child = element->getChild(); child; child = child->getNextSibling()) {
    sum += walk(static_cast<XDMElement*>(child));
  }
  return sum;
}

Case walkCase(const Document& document) {
  std::shared_ptr<XDMMain> model = loadModel(kv(document.text));
  auto plain = std::make_shared<PlainTree>(*model);
  return {.items = document.nodes,
          .work = [=] { keep(walk(model->getRootNode())); },
          .floor = [=] { keep(walkPlain(plain->root())); }};
}

}  // namespace

void addWalks(Workloads* workloads) {
  for (const DocumentShape& shape : documentShapes()) {
    workloads->push_back({.name = "walk/" + shape.name,
                          .meaning = "walk every node through the interfaces and read all of it, " + shape.meaning,
                          .reach = 4,
                          .sizes = shape.sizes,
                          .at = [=](long size) { return walkCase(shape.document(size)); }});
  }
}

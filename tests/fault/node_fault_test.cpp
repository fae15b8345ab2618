// Tests the operations of XDMNode, XDMElement, XDMAttribute and XDMNamespace with exhausted memory.
#include "sweep.h"

namespace {

const std::vector<Kind> withNamespace = {Kind::loaded, Kind::plainMap, Kind::extendedMap};

XDMElement* root(XDMMain* main) { return main->getRootNode(); }

/** The first attribute at or below `element`. */
XDMAttribute* attributeBelow(XDMElement* element) {
  XDMAttribute* found = element->getNextAttribute(nullptr);
  for (XDMNode* child = element->getChild(); child && !found; child = child->getNextSibling()) {
    found = attributeBelow(static_cast<XDMElement*>(child));
  }
  return found;
}

XDMAttribute* anAttribute(XDMMain* main) { return attributeBelow(root(main)); }
XDMNamespace* aNamespace(XDMMain* main) { return root(main)->getNextNamespace(nullptr); }

/** Selects the node that `select` finds; success is a column that is the last one. */
template <class Select>
Operation selectAsColumn(const std::string& name, Select select, const char* columnName) {
  return {.name = name, .kinds = withRoot, .prepare = [select, columnName](XDMMain* main) -> Act {
            XDMNode* node = select(main);
            const KvbString wanted = kv(columnName);
            return [node, wanted](Outcome* outcome) {
              outcome->succeeded = node->selectAsColumn(wanted, true) != nullptr;
            };
          }};
}

/** The operations that elements and attributes have in common. */
template <class Select>
std::vector<Operation> nodeOperations(const std::string& kind, Select select) {
  auto nodeGetter = [&](const char* name, auto get) { return getter(kind + name, withRoot, select, get); };
  return {
      nodeGetter("nodeType", [](auto* n) { return n->nodeType(); }),
      nodeGetter("getChild", [](auto* n) { return n->getChild(); }),
      nodeGetter("getMain", [](auto* n) { return n->getMain(); }),
      nodeGetter("getNextSibling", [](auto* n) { return n->getNextSibling(); }),
      nodeGetter("getParent", [](auto* n) { return n->getParent(); }),
      nodeGetter("getDefault", [](auto* n) { return n->getDefault(); }),
      nodeGetter("getFormat", [](auto* n) { return n->getFormat(); }),
      nodeGetter("getInformat", [](auto* n) { return n->getInformat(); }),
      nodeGetter("getLocalName", [](auto* n) { return n->getLocalName(); }),
      nodeGetter("getMaximumLength", [](auto* n) { return n->getMaximumLength(); }),
      nodeGetter("getNamespace", [](auto* n) { return n->getNamespace(); }),
      nodeGetter("getType", [](auto* n) { return n->getType(); }),
      nodeGetter("getValidValue", [](auto* n) { return n->getValidValue(0); }),
      nodeGetter("getValidValues", [](auto* n) { return n->getValidValues(); }),
      nodeGetter("getXPath", [](auto* n) { return n->getXPath(); }),
      selectAsColumn(kind + "selectAsColumn", select, "a name that is not in use"),
      selectAsColumn(kind + "selectAsColumnWithoutName", select, ""),
  };
}

std::vector<Operation> operator+(std::vector<Operation> some, const std::vector<Operation>& more) {
  some.insert(some.end(), more.begin(), more.end());
  return some;
}

Operation setDecidesRow() {
  return {.name = "Element_setDecidesRow", .kinds = withRoot, .prepare = [](XDMMain* main) -> Act {
            XDMElement* element = root(main);
            return [element](Outcome* outcome) { outcome->succeeded = element->setDecidesRow(true); };
          }};
}

const std::vector<Operation> operations =
    nodeOperations("Element_", root) + nodeOperations("Attribute_", anAttribute) +
    std::vector<Operation>{
        getter("Element_getDecidesRow", withRoot, root, [](auto* e) { return e->getDecidesRow(); }),
        getter("Element_getMaxOccurrences", withRoot, root, [](auto* e) { return e->getMaxOccurrences(); }),
        getter("Element_getNamespaces", withRoot, root, [](auto* e) { return e->getNamespaces(); }),
        getter("Element_getNextAttribute", withRoot, root, [](auto* e) { return e->getNextAttribute(nullptr); }),
        getter("Element_getNextNamespace", withRoot, root, [](auto* e) { return e->getNextNamespace(nullptr); }),
        setDecidesRow(),
        getter("Namespace_getNextSibling", withNamespace, aNamespace, [](auto* n) { return n->getNextSibling(); }),
        getter("Namespace_getParent", withNamespace, aNamespace, [](auto* n) { return n->getParent(); }),
        getter("Namespace_getPrefix", withNamespace, aNamespace, [](auto* n) { return n->getPrefix(); }),
        getter("Namespace_getURI", withNamespace, aNamespace, [](auto* n) { return n->getURI(); }),
    };

class NodeFault : public testing::TestWithParam<Case> {};

TEST_P(NodeFault, LeavesNothingBetweenSuccessAndFailure) {
  RecordProperty("points", static_cast<int>(Sweep(*GetParam().operation, GetParam().kind).run().points));
}

INSTANTIATE_TEST_SUITE_P(Operation, NodeFault, testing::ValuesIn(casesOf(operations)),
                         [](const auto& info) { return nameOf(info); });

}  // namespace

// The tree walk behind a model browser: every node with what a user sees of it, ready for a tree control.
// What it prints is compared with model_browser.txt.
#include <kvxdm/kvxdm.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

/** A node of the browser. `node` is what the user's click selects as a column. */
struct TreeItem {
  std::string label;
  std::string tip;
  XDMNode* node;
  std::vector<TreeItem> children;
};

std::string qualifiedName(XDMNode* node) {
  XDMNamespace* ns = node->getNamespace();
  const std::string prefix = ns && ns->getPrefix().length() > 0 ? std::string(ns->getPrefix().asCstr()) + ":" : "";
  return prefix + node->getLocalName().asCstr();
}

TreeItem makeItem(XDMAttribute* attribute) {
  return {"@" + qualifiedName(attribute), attribute->getXPath().asCstr(), attribute, {}};
}

TreeItem makeItem(XDMElement* element) {
  TreeItem item{qualifiedName(element), element->getXPath().asCstr(), element, {}};
  if (element->getDecidesRow()) item.label += "  (makes the rows)";
  for (XDMAttribute* each = element->getNextAttribute(nullptr); each; each = element->getNextAttribute(each)) {
    item.children.push_back(makeItem(each));
  }
  // The sibling of an element is an element.
  for (XDMElement* each = element->getChild(); each; each = static_cast<XDMElement*>(each->getNextSibling())) {
    item.children.push_back(makeItem(each));
  }
  return item;
}

void printNamespaces(XDMElement* element) {
  for (XDMNamespace* each = element->getNextNamespace(nullptr); each; each = element->getNextNamespace(each)) {
    std::printf("%s = %s\n", each->getPrefix().length() > 0 ? each->getPrefix().asCstr() : "(default)",
                each->getURI().asCstr());
  }
}

void print(const TreeItem& item, int depth) {
  const std::string line = std::string(2 * depth, ' ') + item.label;
  std::printf("%-30s %s\n", line.c_str(), item.tip.c_str());
  for (const TreeItem& child : item.children) print(child, depth + 1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: model_browser MODEL\n");
    return 2;
  }
  KvbString error;
  XDMMainPtr model(kvxdmCreateMain(0));
  if (!model->loadFromFile(KvbString(argv[1], true), &error)) {
    std::fprintf(stderr, "model_browser: %s\n", error.asCstr());
    return 1;
  }
  printNamespaces(model->getRootNode());
  print(makeItem(model->getRootNode()), 0);
  return 0;
}

#include "map_place.h"

#include <kvxdom/kvdom.h>

#include <string_view>

#include "model.h"
#include "text.h"

namespace {

KvbString literal(const char* text) { return {text, true}; }

bool isNamed(const KvDomNode& node, const char* name) { return node.getName().compare(name, true) == 0; }

KvDomNode firstNamed(KvDomNode node, const char* name) {
  while (!node.null() && !isNamed(node, name)) node = node.getNextSibling(false);
  return node;
}

KvDomNode childNamed(const KvDomNode& parent, const char* name) {
  return firstNamed(parent.getFirstChild(false), name);
}

KvDomNode nextNamed(const KvDomNode& node, const char* name) { return firstNamed(node.getNextSibling(false), name); }

KvbString nameOf(const KvDomNode& node) { return node.getAttributeValue(literal("name")); }

KvDomNode findTable(const KvDomNode& root, const std::string& name) {
  KvDomNode table = childNamed(root, "TABLE");
  while (!name.empty() && !table.null() && nameOf(table).compare(name.c_str(), true) != 0) {
    table = nextNamed(table, "TABLE");
  }
  return table;
}

bool hasRow(XDMMain& main) {
  for (ElementWalk walk(main.getRootNode()); walk.element(); walk.next()) {
    if (walk.element()->getDecidesRow()) return true;
  }
  return false;
}

bool isMessage(const std::string& text, int number) { return text.starts_with("XDM" + std::to_string(number) + ":"); }

/** The ATTRIBUTE of a HEADING that `message` complains about. */
KvDomNode failedAttribute(const KvDomNode& root, const std::string& message) {
  KvDomNode heading = childNamed(childNamed(root, "OUTPUT"), "HEADING");
  for (KvDomNode at = childNamed(heading, "ATTRIBUTE"); !at.null(); at = nextNamed(at, "ATTRIBUTE")) {
    std::string name = toStd(nameOf(at));
    if (isMessage(message, name.empty() ? 1415 : 1423)) return at;
    if (!name.empty() && isMessage(message, 1444) && message.find(name) != std::string::npos) return at;
  }
  return {};
}

/** How many columns of the table were done with. One whose own XPath was refused (1445) is selected already. */
int columnsDone(XDMMain& main, const std::string& message) {
  int selected = main.getSelectedColumns();
  return isMessage(message, 1445) && selected > 0 ? selected - 1 : selected;
}

std::string columnDoing(const std::string& message) {
  for (int number : {1420, 1443, 1444, 1445}) {
    if (isMessage(message, number)) return "building its path";
  }
  if (message.empty()) return "building its path; a brace is opened there and never closed";
  return isMessage(message, 267) ? "selecting it" : "reading what it says";
}

std::string place(const FailedImport& import, const KvDomNode& node, const std::string& what) {
  return import.mapName + ":" + std::to_string(node.getLine()) + ": " + what;
}

std::string placeOfColumn(XDMMain& main, const KvDomNode& table, const FailedImport& import) {
  KvDomNode column = childNamed(table, "COLUMN");
  for (int done = columnsDone(main, import.message); done > 0 && !column.null(); --done) {
    column = nextNamed(column, "COLUMN");
  }
  if (column.null()) return "";
  return place(import, column, "column '" + toStd(nameOf(column)) + "': while " + columnDoing(import.message));
}

/** The NS that has not the number of its place, which `message` complains about. */
KvDomNode failedNamespace(const KvDomNode& root, const std::string& message) {
  if (!isMessage(message, 1420)) return {};
  int expected = 0;
  KvDomNode ns = childNamed(childNamed(root, "NAMESPACES"), "NS");
  while (!ns.null() && toStd(ns.getAttributeValue(literal("id"))) == std::to_string(++expected)) {
    ns = nextNamed(ns, "NS");
  }
  return ns;
}

bool concernsWholeMap(const std::string& message) {
  for (int number : {472, 1422, 1448, 1449, 1450, 1452}) {
    if (isMessage(message, number)) return true;
  }
  return message.starts_with("Failed to parse groupBy");
}

}  // namespace

std::string placeOfFailure(XDMMain& main, const FailedImport& import) {
  KvDom map;
  if (concernsWholeMap(import.message) || !map.loadFile(toKvb(import.path))) return "";
  KvDomNode ns = failedNamespace(map.getRoot(), import.message);
  if (!ns.null()) return place(import, ns, "NS: while reading the namespaces");
  KvDomNode table = findTable(map.getRoot(), import.table);
  KvDomNode tablePath = childNamed(table, "TABLE-PATH");
  if (!tablePath.null() && !hasRow(main)) return place(import, tablePath, "TABLE-PATH: while building the row's path");
  KvDomNode attribute = import.heading ? failedAttribute(map.getRoot(), import.message) : KvDomNode();
  if (!attribute.null()) return place(import, attribute, "HEADING: while making the root's attributes");
  return placeOfColumn(main, table, import);
}

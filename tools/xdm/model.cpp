#include "model.h"

#include <kvxbase/kvbparse.h>
#include <kvxdom/kvdom.h>

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "diagnostics.h"
#include "files.h"
#include "map_place.h"
#include "progress.h"
#include "sources.h"
#include "text.h"

namespace {

constexpr unsigned int collectionFlag = 0x80000000u;
constexpr unsigned int retainFlag = 0x80000000u;
constexpr unsigned int acceptOutputFlag = 0x40000000u;
constexpr unsigned int headingFlag = 0x20000000u;
constexpr std::uintmax_t largestText = 1u << 30;  // larger documents are refused by the library anyway

bool isMap(const std::string& path) {
  File file(std::fopen(path.c_str(), "rbe"));
  try {
    return file && readProlog(file.get()).rootName == "ROWMAPS";
  } catch (const Failure&) {
    return false;  // what can't be read, a folder for one, is left to the library, which says why
  }
}

unsigned int importFlags(const ModelOptions& options) {
  return (options.retain ? retainFlag : 0) | (options.acceptOutput ? acceptOutputFlag : 0) |
         (options.heading ? headingFlag : 0);
}

/** The library passes over names that no column has. */
void warnOfUnknownGroups(XDMMain& main, const std::string& groupBy) {
  KvbParse groups;
  groups.parse(toKvb(groupBy), 0);
  std::vector<std::string> columns = columnNames(main);
  for (int index = 0; index < groups.getAttributeCount(); ++index) {
    KvbString level;
    KvbString column;
    groups.getAttribute(index, &level, &column);
    if (std::find(columns.begin(), columns.end(), toStd(column)) != columns.end()) continue;
    warn("--group-by: the table has no column '" + toStd(column) + "'");
  }
}

void importMap(XDMMain& main, const std::string& path, const ModelOptions& options) {
  KvbString error;
  if (main.createFromXMLMap(toKvb(path), toKvb(options.table), toKvb(options.groupBy), importFlags(options), &error)) {
    return warnOfUnknownGroups(main, options.groupBy);
  }
  std::string text = replaced(toStd(error), path, options.path);
  std::string place = placeOfFailure(main, {options.path, path, options.table, options.heading, text});
  if (text.empty()) {
    text = "the import of '" + options.path +
           "' failed; usually a path opens a brace that it never closes, or has nothing between two braces";
  }
  throw Failure(text, place);
}

/** What is wrong with a well-formed `document` that the library did not take. */
std::string faultOf(const KvDom& document, const std::string& name) {
  std::string root = toStd(document.getRoot().getName());
  if (root == "xdm") return "in " + name;
  if (root == "ROWMAPS") return "an XMLMap is given as a file; " + name + " is read as an XDM document";
  return name + " has the root element '" + root + "'; that of an XDM document is 'xdm', that of an XMLMap 'ROWMAPS'";
}

void loadStandardInput(XDMMain& main) {
  KvbString error;
  KvbString text = toKvb(readText(stdin, largestText + 1));
  if (static_cast<std::uintmax_t>(text.length()) > largestText) throw Failure("standard input holds more than 1 GiB");
  if (main.loadFromXML(text, &error)) return;
  KvDom document;
  std::string name = titleOf("-");
  throw Failure(toStd(error),
                document.loadXML(text) ? faultOf(document, name) : name + ": " + reasonOf(document, name));
}

/** Loads the document at `path`, which the user calls `name`. */
void loadDocument(XDMMain& main, const std::string& path, const std::string& name) {
  KvbString error;
  if (main.loadFromFile(toKvb(path), &error)) return;
  KvDom document;
  throw Failure(replaced(toStd(error), path, name),
                document.loadFile(toKvb(path)) ? faultOf(document, name) : name + ": " + reasonOf(document, path));
}

/** The path of the model: a pipe is copied, since it is read twice. */
std::string readablePath(const std::string& path, const TemporaryFolder& folder) {
  std::error_code unknown;
  bool isPipe = std::filesystem::is_fifo(path, unknown) || std::filesystem::is_character_file(path, unknown);
  return isPipe ? regularFile(path, folder) : path;
}

void fill(XDMMain& main, const ModelOptions& options) {
  if (options.path == "-") {
    loadStandardInput(main);
  } else {
    TemporaryFolder folder;
    std::string path = readablePath(options.path, folder);
    if (isMap(path)) return importMap(main, path, options);
    loadDocument(main, path, options.path);
  }
  if (options.hasMapOptions) {
    throw WrongUsage("'" + options.path +
                     "' is an XDM document; --table, --group-by, --retain, --accept-output and --heading are for maps");
  }
}

/** The nodes by XPath; of nodes with the same one the first in document order. */
class NodeIndex {
 public:
  explicit NodeIndex(XDMMain& main) {
    for (ElementWalk walk(main.getRootNode()); walk.element(); walk.next()) {
      XDMElement* element = walk.element();
      elements_.try_emplace(toStd(element->getXPath()), element);
      nodes_.try_emplace(toStd(element->getXPath()), element);
      for (XDMAttribute* attribute = nullptr; (attribute = element->getNextAttribute(attribute));) {
        nodes_.try_emplace(toStd(attribute->getXPath()), attribute);
      }
    }
  }

  /** Null when there is none. */
  XDMElement* element(const std::string& xpath) const { return find(elements_, xpath); }
  XDMNode* node(const std::string& xpath) const { return find(nodes_, xpath); }

 private:
  template <typename Node>
  using ByXPath = std::unordered_map<std::string, Node*>;

  template <typename Node>
  static Node* find(const ByXPath<Node>& nodes, const std::string& xpath) {
    auto found = nodes.find(xpath);
    return found == nodes.end() ? nullptr : found->second;
  }

  ByXPath<XDMElement> elements_;
  ByXPath<XDMNode> nodes_;
};

void markRow(const NodeIndex& index, const std::string& xpath) {
  XDMElement* element = index.element(xpath);
  if (!element) throw Failure("--row: the model has no element with the XPath '" + xpath + "'");
  element->setDecidesRow(true);
}

void selectColumn(const NodeIndex& index, const ColumnChoice& choice) {
  const char* option = choice.isGroupBy ? "--group-column" : "--column";
  XDMNode* node = index.node(choice.xpath);
  if (!node) throw Failure(std::string(option) + ": the model has no node with the XPath '" + choice.xpath + "'");
  if (node->selectAsColumn(toKvb(choice.name), choice.isGroupBy)) return;
  throw Failure(std::string(option) + ": '" + choice.xpath + "' could not be selected as column '" + choice.name +
                "'; usually another column has that name");
}

void mark(XDMMain& main, const ModelOptions& options) {
  if (!options.row && options.columns.empty()) return;
  NodeIndex index(main);
  if (options.row) markRow(index, *options.row);
  for (const ColumnChoice& choice : options.columns) selectColumn(index, choice);
}

void setColumnXPath(XDMMain& main, const std::string& name, const std::string& xpath) {
  for (XDMColumn* column : columnsOf(main)) {
    if (toStd(column->getName()) != name) continue;
    KvbString error;
    if (!column->setXPath(toKvb(xpath), &error)) throw Failure(toStd(error), "--column-xpath " + name + "=" + xpath);
    return;
  }
  throw Failure("--column-xpath: the model has no column '" + name + "'");
}

}  // namespace

XDMMainPtr openModel(const ModelOptions& options) {
  tellProgress("reading " + titleOf(options.path));
  XDMMainPtr main(kvxdmCreateMain(options.collection ? collectionFlag : 0));
  fill(*main, options);
  mark(*main, options);
  for (const auto& [name, xpath] : options.columnXPaths) setColumnXPath(*main, name, xpath);
  return main;
}

void ElementWalk::next() {
  if (XDMElement* child = element_->getChild()) {
    element_ = child;
    ++level_;
    return;
  }
  XDMNode* sibling = nullptr;
  while (element_ && !(sibling = element_->getNextSibling())) {
    element_ = element_->getParent();
    --level_;
  }
  element_ = static_cast<XDMElement*>(sibling);
}

std::vector<XDMColumn*> columnsOf(XDMMain& main) {
  std::vector<XDMColumn*> columns;
  for (int index = 0; index < main.getSelectedColumns(); ++index) columns.push_back(main.getSelectedColumn(index));
  return columns;
}

std::vector<std::string> columnNames(XDMMain& main) {
  std::vector<std::string> names;
  for (XDMColumn* column : columnsOf(main)) names.push_back(toStd(column->getName()));
  return names;
}

std::string qualifiedName(XDMNode* node) {
  XDMNamespace* space = node->getNamespace();
  std::string prefix = space ? toStd(space->getPrefix()) : "";
  return prefix.empty() ? toStd(node->getLocalName()) : prefix + ":" + toStd(node->getLocalName());
}

const char* typeName(kvbType type) {
  switch (type) {
    case 2:
      return "integer";
    case 3:
      return "double";
    case 4:
      return "string";
    case 5:
      return "datetime";
    default:
      return "none";
  }
}

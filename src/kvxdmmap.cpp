// The XMLMap reader: one table of a map becomes the tree, the element that decides the row and the typed columns.
// Tested by tests/unit/kvxdmmap_*_test.cpp.
#include <map>

#include <kvxbase/kvbparse.h>

#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "kvxdmmap_dom.h"
#include "kvxdmmap_path.h"
#include "kvxdmmap_typing.h"
#include "kvxdmtext.h"

namespace xmlmap {
namespace {

constexpr KvLoggingLevel information = 2;

constexpr unsigned retainFlag = 0x80000000;
constexpr unsigned acceptOutputFlag = 0x40000000;
constexpr unsigned headingFlag = 0x20000000;

bool isPathSyntax(const KvbString& text) { return isKeyword(text, "XPath") || isKeyword(text, "XPathENR"); }

/**
 * Reads one map. Failures up to the choice of the table, and a table without columns, are told to the caller only;
 * those in the table go to the main object, and on to a caller who has no text yet.
 */
class MapReader {
 public:
  MapReader(XDMMainImpl* main, const KvbString& mapFile, const KvbString& tableName, unsigned flags, KvbString* error)
      : main_(main), mapFile_(mapFile), tableName_(tableName), flags_(flags), error_(error) {}

  bool read(const KvbString& groupBy) {
    if (!checkModelIsEmpty() || !loadMap() || !checkRootAndVersion() || !readGroupBy(groupBy) || !findTable())
      return false;
    lookBehindTable();
    acceptOutput();
    return buildModel() && checkColumnsSelected();
  }

 private:
  template <class... Arguments>
  bool tellCaller(int line, int number, const Arguments&... arguments) {
    *error_ = message(unit, line, number, arguments...);
    return false;
  }

  bool checkModelIsEmpty() { return !main_->root() || tellCaller(__LINE__, 1422); }

  bool loadMap() {
    if (!map_.loadFile(mapFile_)) return tellCaller(__LINE__, 472, mapFile_, map_.getErrorMessage());
    logLoaded();
    return true;
  }

  void logLoaded() const {
    KvLogger_* logger = main_->logger();
    if (logger) logger->logEvent(information, unit, __LINE__, "Loaded XMLMap '%s' into DOM.", mapFile_.asCstr());
  }

  bool checkRootAndVersion() {
    if (!isNamed(map_.getRoot(), "ROWMAPS")) return tellCaller(__LINE__, 1448, mapFile_);
    const KvbString version = map_.getRoot().getAttributeValue(attributeNames().version);
    isVersion21_ = version.compare("2.1", true) == 0;
    if (!isVersion21_ && version.compare("1.9", true) != 0) return tellCaller(__LINE__, 1449, mapFile_, version);
    return true;
  }

  bool readGroupBy(const KvbString& groupBy) {
    if (isEmpty(groupBy)) return true;
    flags_ &= ~retainFlag;
    main_->setGroupExplicit();
    KvbParse parser;
    if (!parser.parse(groupBy, 0)) {
      *error_ = kvbStringFormat("Failed to parse groupBy string '%s' (%s)", groupBy.asCstr(),
                                parser.getErrorMessage().asCstr());
      return false;
    }
    keepGroupLevels(parser);
    return true;
  }

  // The first attribute has the highest level, and of those that name the same column the first one counts.
  void keepGroupLevels(const KvbParse& parser) {
    const int count = parser.getAttributeCount();
    for (int i = 0; i < count; ++i) {
      KvbString name;
      KvbString column;
      parser.getAttribute(i, &name, &column);
      groupLevels_.try_emplace(column, count - i);
    }
  }

  bool findTable() {
    for (KvDomNode node = map_.getRoot().getFirstChild(false); !node.null(); node = node.getNextSibling(false)) {
      if (isWantedTable(node)) {
        table_ = node;
        tableName_ = node.getAttributeValue(attributeNames().name);
        return true;
      }
      if (output_.null() && isNamed(node, "OUTPUT")) output_ = node;
      if (namespaces_.null() && isNamed(node, "NAMESPACES")) namespaces_ = node;
    }
    if (isEmpty(tableName_)) return tellCaller(__LINE__, 1450, mapFile_);
    return tellCaller(__LINE__, 1450, mapFile_, tableName_);
  }

  bool isWantedTable(const KvDomNode& node) const {
    if (!isNamed(node, "TABLE")) return false;
    return isEmpty(tableName_) || node.getAttributeValue(attributeNames().name).compare(tableName_, true) == 0;
  }

  // On the way to the first "OUTPUT" a later "NAMESPACES" replaces an earlier one, one before the table included.
  void lookBehindTable() {
    KvDomNode node = table_.getNextSibling(false);
    for (; !node.null() && !hasFoundEnough(); node = node.getNextSibling(false)) {
      if (output_.null() && isNamed(node, "OUTPUT")) output_ = node;
      if (isNamed(node, "NAMESPACES")) namespaces_ = node;
    }
  }

  bool hasFoundEnough() const { return !output_.null() && (!isVersion21_ || !namespaces_.null()); }

  // Only the first "TABLEREF" counts.
  void acceptOutput() {
    const KvbString reference = firstChildNamed(output_, "TABLEREF").getAttributeValue(attributeNames().name);
    const bool isForTable = !isEmpty(reference) && reference.compare(tableName_, true) == 0;
    if (isForTable || (flags_ & acceptOutputFlag)) acceptedOutput_ = output_;
  }

  bool buildModel() {
    const bool built = guarded(main_, "(XPath)", nullptr, false,
                               [this] { return buildRowPath() && addHeadingAttributes() && selectColumns(); });
    if (!built && isEmpty(*error_)) *error_ = main_->errorMessage();
    return built;
  }

  bool buildRowPath() {
    const KvDomNode node = firstChildNamed(table_, "TABLE-PATH");
    if (node.null()) return true;
    const KvbString syntax = node.getAttributeValue(attributeNames().syntax);
    if (!isEmpty(syntax) && !isPathSyntax(syntax)) return fail(main_, __LINE__, 1414, "TABLE-PATH", syntax);
    KvbString path = trimmedText(node);
    if (isEmpty(path)) return fail(main_, __LINE__, 1415, "TABLE-PATH");
    return markRowElement(buildPath(&path, true), path);
  }

  bool markRowElement(XDMNode* node, const KvbString& path) {
    if (!node) return false;
    if (node->nodeType() == 0) return fail(main_, __LINE__, 1414, "TABLE-PATH", path);
    auto* element = static_cast<XDMElemImpl*>(node);
    if (!element->setXPath(path)) return false;
    element->setDecidesRow(true);
    return true;
  }

  XDMNode* buildPath(KvbString* path, bool isTablePath) {
    if (namespaces_.null()) return buildFromXPath(main_, *path, acceptedOutput_, isTablePath);
    return buildFromXPathENR(main_, path, namespaces_, isTablePath);
  }

  bool addHeadingAttributes() {
    if (!(flags_ & headingFlag)) return true;
    for (const KvDomNode& entry : ChildrenNamed(firstChildNamed(acceptedOutput_, "HEADING"), "ATTRIBUTE")) {
      if (!addHeadingAttribute(entry)) return false;
    }
    return true;
  }

  // The namespace entries were read when the root was made.
  bool addHeadingAttribute(const KvDomNode& entry) {
    const KvbString name = entry.getAttributeValue(attributeNames().name);
    if (isEmpty(name)) return fail(main_, __LINE__, 1415, "name");
    if (isNamespaceEntry(name)) return true;
    LocationStep step(view(name));
    if (!separateXPathStep(&step)) return false;
    if (!main_->getRootNode()) return fail(main_, __LINE__, 1423);
    XDMNSImpl* declaration = isEmpty(step.prefix) ? nullptr : main_->root()->lookupNamespace(step.prefix);
    if (!isEmpty(step.prefix) && !declaration) return fail(main_, __LINE__, 1444, name);
    bool created = false;
    XDMAttrImpl* added = main_->root()->createAttribute(declaration, step.localName, &created);
    return added && added->setDefault(entry.getAttributeValue(attributeNames().value));
  }

  bool selectColumns() {
    for (const KvDomNode& node : ChildrenNamed(table_, "COLUMN")) {
      if (!selectColumn(node)) return false;
    }
    return true;
  }

  bool selectColumn(const KvDomNode& node) {
    ColumnTyping typing(main_);
    KvbString xpath;
    KvbString extendedPath;
    if (!readColumn(node, &typing, &xpath, &extendedPath) || !typing.check()) return false;
    if (!namespaces_.null() && isEmpty(xpath)) xpath = extendedPath;
    XDMNode* target = buildPath(&xpath, false);
    if (!target) return false;
    const KvbString name = node.getAttributeValue(attributeNames().name);
    XDMColumn* column = main_->selectAsColumn(target, name, groupLevel(node, name, target));
    return column && typing.apply(column, xpath);
  }

  bool readColumn(const KvDomNode& node, ColumnTyping* typing, KvbString* xpath, KvbString* extendedPath) {
    for (KvDomNode child = node.getFirstChild(false); !child.null(); child = child.getNextSibling(false)) {
      if (!(isNamed(child, "PATH") ? readPath(child, xpath, extendedPath) : typing->read(child))) return false;
    }
    return true;
  }

  bool readPath(const KvDomNode& node, KvbString* xpath, KvbString* extendedPath) {
    const KvbString syntax = node.getAttributeValue(attributeNames().syntax);
    if (!isEmpty(syntax) && !isPathSyntax(syntax)) return fail(main_, __LINE__, 1414, "PATH", syntax);
    *(isKeyword(syntax, "XPathENR") ? extendedPath : xpath) = trimmedText(node);
    return true;
  }

  // With a group-by string there is no retain mode and without one there are no group levels.
  int groupLevel(const KvDomNode& node, const KvbString& name, XDMNode* target) const {
    const bool retains = (flags_ & retainFlag) && isKeyword(node.getAttributeValue(attributeNames().retain), "yes");
    if (retains) return distanceToRow(target);
    const auto found = groupLevels_.find(name);
    return found == groupLevels_.end() ? 0 : found->second;
  }

  static int distanceToRow(XDMNode* node) {
    XDMElement* element = node->nodeType() == 0 ? node->getParent() : static_cast<XDMElement*>(node);
    return implOf(element)->parentOfDecidingRow();
  }

  bool checkColumnsSelected() {
    return main_->getSelectedColumns() > 0 || tellCaller(__LINE__, 1452, mapFile_, tableName_);
  }

  XDMMainImpl* const main_;
  const KvbString mapFile_;
  KvbString tableName_;
  unsigned flags_;
  KvbString* const error_;

  KvDom map_;
  bool isVersion21_ = false;
  std::map<KvbString, int, KvbStringLess> groupLevels_;
  KvDomNode table_;
  KvDomNode output_;
  KvDomNode namespaces_;
  KvDomNode acceptedOutput_;
};

}  // namespace
}  // namespace xmlmap

bool XDMMainImpl::createFromXMLMap(const KvbString& mapFile, const KvbString& tableName, const KvbString& groupBy,
                                   unsigned int flags, KvbString* error) {
  return guarded(this, "(XPath)", error, false,
                 [&] { return xmlmap::MapReader(this, mapFile, tableName, flags, error).read(groupBy); });
}

// Writes XMLMaps, imports them and tells in plain text what came out.
#ifndef KVXDM_TESTS_XMLMAP_H
#define KVXDM_TESTS_XMLMAP_H

#include <kvxdm/kvxdm.h>

#include <string>
#include <string_view>

#include "kvxdmattr.h"
#include "kvxdmelem.h"
#include "kvxdmmain.h"
#include "temporary.h"
#include "texts.h"

inline std::string rowmaps(std::string_view version, std::string_view body) {
  return "<ROWMAPS version=\"" + std::string(version) + "\">" + std::string(body) + "</ROWMAPS>";
}

inline std::string rowmaps(std::string_view body) { return rowmaps("1.9", body); }

inline std::string table(std::string_view name, std::string_view path, std::string_view columns) {
  return "<TABLE name=\"" + std::string(name) + "\"><TABLE-PATH>" + std::string(path) + "</TABLE-PATH>" +
         std::string(columns) + "</TABLE>";
}

constexpr std::string_view integerType = "<DATATYPE>integer</DATATYPE>";

inline std::string column(std::string_view name, std::string_view path, std::string_view typing = integerType) {
  return "<COLUMN name=\"" + std::string(name) + "\"><PATH>" + std::string(path) + "</PATH>" + std::string(typing) +
         "</COLUMN>";
}

/** A main object whose error message is "before", and one import into it. */
class MapImport {
 public:
  MapImport() { main_->setErrorMessage(kv("before")); }
  ~MapImport() { main_->release(); }
  MapImport(const MapImport&) = delete;
  MapImport& operator=(const MapImport&) = delete;

  bool run(std::string_view map, std::string_view tableName = {}, std::string_view groupBy = {}, unsigned flags = 0) {
    writeFile(file(), map);
    return runFile(file(), tableName, groupBy, flags);
  }

  bool runFile(const std::string& path, std::string_view tableName = {}, std::string_view groupBy = {},
               unsigned flags = 0) {
    return main_->createFromXMLMap(kv(path), kv(tableName), kv(groupBy), flags, &error_);
  }

  /** Where run() writes the map. */
  std::string file() const { return folder_.file("map.xml"); }

  void setError(std::string_view text) { error_ = kv(text); }
  std::string error() const { return str(error_); }
  std::string mainError() const { return str(main_->errorMessage()); }

  XDMMainImpl* main() const { return main_; }
  XDMElemImpl* root() const { return main_->root(); }
  XDMColumn* column(int index) const { return main_->getSelectedColumn(index); }

 private:
  TemporaryFolder folder_;
  XDMMainImpl* main_ = new XDMMainImpl(0);
  KvbString error_;
};

inline std::string qualifiedName(XDMNode* node) {
  XDMNamespace* ns = node->getNamespace();
  std::string prefix = ns ? str(ns->getPrefix()) : std::string();
  return (prefix.empty() ? prefix : prefix + ":") + str(node->getLocalName());
}

/** The tree below and with `element` in one line: its name, then attributes and children in brackets; the element that
 * decides the row has a star. */
inline std::string outline(XDMElement* element) {
  std::string inner;
  for (XDMAttribute* a = element->getNextAttribute(nullptr); a; a = element->getNextAttribute(a)) {
    inner += (inner.empty() ? "@" : " @") + qualifiedName(a);
  }
  for (XDMNode* child = element->getChild(); child; child = child->getNextSibling()) {
    inner += (inner.empty() ? "" : " ") + outline(static_cast<XDMElement*>(child));
  }
  return qualifiedName(element) + (element->getDecidesRow() ? "*" : "") + (inner.empty() ? "" : "(" + inner + ")");
}

/** The declarations made on `element`: "prefix=URI", separated by blanks. */
inline std::string declarations(XDMElement* element) {
  std::string text;
  for (XDMNamespace* ns = element->getNextNamespace(nullptr); ns; ns = element->getNextNamespace(ns)) {
    text += (text.empty() ? "" : " ") + str(ns->getPrefix()) + "=" + str(ns->getURI());
  }
  return text;
}

/** The names of the selected columns, each with its group level when that is not 0, separated by blanks. */
inline std::string columnsOf(XDMMain* main) {
  std::string text;
  for (int i = 0; i < main->getSelectedColumns(); ++i) {
    XDMColumn* column = main->getSelectedColumn(i);
    const int level = column->getIsGroupBy();
    text += (i == 0 ? "" : " ") + str(column->getName()) + (level == 0 ? "" : ":" + std::to_string(level));
  }
  return text;
}

#endif

// The main object: the hub of one model.
// Tested by tests/unit/kvxdm_test.cpp, kvxdm_load_test.cpp, kvxdmmap_*_test.cpp and kvxdmxqy_*_test.cpp.
#ifndef KVXDM_SRC_KVXDMMAIN_H
#define KVXDM_SRC_KVXDMMAIN_H

#include <cstddef>
#include <map>
#include <new>
#include <string>
#include <string_view>

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>
#include <kvxlog/kvlogger.h>

#include "kvxdmxqy_columns.h"

class LastSteps;
class QueryText;
class XDMColumnImpl;
class XDMElemImpl;
class XDMNSImpl;

/** One model: the tree, the selected columns, and what naming and query generation need to know of them. */
class XDMMainImpl final : public XDMMain {
 public:
  /** Of `flags` only 0x80000000 counts: it asks for a collection variable. */
  explicit XDMMainImpl(unsigned int flags);
  XDMMainImpl(const XDMMainImpl&) = delete;
  XDMMainImpl& operator=(const XDMMainImpl&) = delete;

  // XDMMain
  void release() override;
  bool loadFromFile(const KvbString& path, KvbString* error) override;
  bool loadFromXML(const KvbString& xml, KvbString* error) override;
  bool saveToFile(const KvbString& path, KvbString* error) override;
  bool saveToXML(KvbString* xml, KvbString* error) override;
  bool createFromXMLMap(const KvbString& mapFile, const KvbString& tableName, const KvbString& groupBy,
                        unsigned int flags, KvbString* error) override;
  KvbString getCollectionVariableName() override;
  XDMElement* getRootNode() override;
  int getSelectedColumns() override;
  XDMColumn* getSelectedColumn(int index) override;
  KvbString genXQueryFromColumns(bool streaming, bool groupRows, KvbString* error) override;
  KvbString genXQueryToColumns(bool streaming, bool sequenceArgument, bool relativeLets, bool keepWhitespace,
                               KvbString* error) override;

  /** Destroys the namespace list. The tree and the columns stay behind on purpose. */
  virtual ~XDMMainImpl();

  // State
  void setErrorMessage(const KvbString& text) noexcept { errorMessage_ = text; }
  /** The text of the last failure reported to this object. */
  const KvbString& errorMessage() const noexcept { return errorMessage_; }
  bool getGroupExplicit() const noexcept { return groupExplicit_; }
  /** Keeps that an import was given a group-by string. */
  void setGroupExplicit() noexcept { groupExplicit_ = true; }
  /** The logger of the category "KV.XDM"; null when there was no memory for it. */
  KvLogger_* logger() const noexcept { return logger_; }
  /** The declarations made while an XMLMap's extended paths are resolved; owned by this object. */
  XDMList* getNSList() noexcept { return &namespaceList_; }
  /** The root, null when the model is empty; unlike getRootNode it logs nothing. */
  XDMElemImpl* root() const noexcept { return root_; }
  /** The element that decides the row, or null. */
  XDMElemImpl* decidingElement() const noexcept { return decidingElement_; }
  /** Counts the XPath of a new node. False when the model's XPaths together are out of all proportion to its nodes. */
  bool holdXPath(std::size_t bytes) noexcept;
  /** Where the XPath of a new node is put together. */
  KvbString& xpathDraft() noexcept { return xpathDraft_; }
  /** Another number after every change of a row mark: what was found out for an older one is void. */
  unsigned rowMarkVersion() const noexcept { return rowMarkVersion_; }

  /** The root of an empty model. Null when there is one (1422) or memory is exhausted, with the message set. */
  XDMElemImpl* createRoot(const KvbString& prefix, const KvbString& localName) noexcept;

  /** Records which element decides the row, after `element` has stored its flag; returns that flag. */
  bool setDecidesRow(XDMElemImpl* element);

  // Columns
  /** As XDMNode::selectAsColumn, with a group level; failure texts go to the error message. */
  XDMColumn* selectAsColumn(XDMNode* node, const KvbString& name, int isGroupBy) noexcept;
  /** Registers `name`; false when it is registered already. */
  bool addColumnName(const KvbString& name);
  /** `base` when it is not registered yet (it is then), otherwise `base` with the next number, which is not. */
  KvbString createColumnName(const KvbString& base);
  /** Takes `name` out of the registry, unless names with numbers were made from it. */
  void removeColumnName(const KvbString& name) noexcept;
  /** Destroys the column, which takes it out of the list and its name out of the registry. */
  void removeColumn(XDMColumn* column) noexcept;
  /** Takes the column out of the list and its name out of the registry; its destructor calls this. */
  void unregisterColumn(XDMColumnImpl* column) noexcept;
  /** The column at `index` of the list; no log event and no test for a root. */
  XDMColumnImpl* column(int index) const noexcept;

  // XPaths and queries
  /**
   * Cuts an absolute XPath into its steps. The first character is skipped unexamined. The caller frees the array with
   * delete[]; `*count` receives the number of steps. Null with the error message set when memory is exhausted.
   */
  KvbString* parseXPath(const KvbString& xpath, int* count) noexcept;

  /**
   * Projects the selected columns onto the tree, gathers the namespace prolog and, unless the query looks none up,
   * enters the columns by their XPaths. False with the message set.
   */
  bool markSelected(bool enterColumns = true);
  /** Adds the declarations of `element` to the prolog. False with the message set. */
  bool markNamespaces(XDMElemImpl* element);
  const std::string& namespaceProlog() const noexcept { return namespaceProlog_; }

  /** Writes the constructor of `element` from rows; see kvxdmxqy_from_rows.cpp. */
  bool genElementFromColumns(XDMElemImpl* element, short* functions, bool inRowLoop, bool groupRows,
                             std::string_view xpath, std::string_view rowPath, const char* predicate,
                             const char* rowSelector, QueryText& out);
  /** Opens the group loop of `column`, if it is a group column. Throws std::bad_alloc. */
  void buildGroupForLoop(XDMColumnImpl* column, QueryText& predicate, QueryText& loop, QueryText& closing);

  /** The column whose XPath is `xpath` as of the last markSelected, or null. */
  XDMColumnImpl* columnByXPath(std::string_view xpath) const noexcept { return columnsByXPath_.find(xpath); }

  // The XDM document
  bool toDOM(KvDom* dom);
  bool fromDOM(KvDom& dom);

  /** Reports exhausted memory with the argument `what` of message 29: to `error` if given, else as error message. */
  void reportExhausted(const char* what, KvbString* error) noexcept;

 private:
  /** The element that was marked last, with all its ancestors, and by which XPath. */
  struct MarkedPath {
    XDMElemImpl* element = nullptr;
    std::string_view xpath;
  };

  template <class Parse>
  bool load(KvbString* error, Parse parse) noexcept;
  template <class Write>
  bool save(KvbString* error, Write write) noexcept;
  std::nullptr_t fail(const KvbString& text) noexcept;
  XDMColumn* addColumn(XDMNode* node, const KvbString& name, int isGroupBy) noexcept;

  bool markColumn(XDMColumnImpl* column, MarkedPath* last);
  bool markAncestors(XDMElemImpl* element, LastSteps steps, MarkedPath* last);
  /** Whether the declarations of `element` are in the prolog for good. */
  bool isDeclared(const XDMElemImpl* element) const noexcept;
  bool declareNamespace(const XDMNSImpl& declaration);
  void appendToProlog(const KvbString& prefix, const KvbString& uri);

  KvLogger_* logger_;
  KvbString errorMessage_;
  XDMElemImpl* root_ = nullptr;
  XDMElemImpl* decidingElement_ = nullptr;
  std::map<KvbString, int, KvbStringLess> columnNames_;
  XDMList selectedColumns_;
  ColumnsByXPath columnsByXPath_{selectedColumns_};
  std::map<KvbString, KvbString, KvbStringLess> namespaceMap_;
  std::string namespaceProlog_;
  bool ancestorsMarked_ = true;  // every ancestor of a selected node has its step
  KvbString collectionVariableName_;
  bool groupExplicit_ = false;
  XDMList namespaceList_;
  unsigned rowMarkVersion_ = 1;
  unsigned markingPass_ = 1;
  std::size_t nodeCount_ = 0;
  std::size_t xpathBytes_ = 0;
  KvbString xpathDraft_;
};

/**
 * Runs the body of an interface operation. Exhausted memory inside becomes message 29 with the argument `what` and the
 * operation's failure result.
 */
template <class Result, class Body>
Result guarded(XDMMainImpl* main, const char* what, KvbString* error, Result failure, Body body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    main->reportExhausted(what, error);
    return failure;
  }
}

#endif

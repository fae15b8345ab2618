// The XML Data Model library: everything that a host uses.
//
// A host makes a main object with kvxdmCreateMain, fills it (loadFromFile, loadFromXML or createFromXMLMap), walks the
// tree of the model from getRootNode, selects nodes as columns, marks the element whose occurrences make rows, asks for
// query text and ends the object with release:
//
//     KvbString error;
//     XDMMainPtr model(kvxdmCreateMain(0));
//     if (!model->loadFromFile(KvbString("library.xdm", true), &error)) return fail(error.asCstr());
//     XDMElement* book = model->getRootNode()->getChild();
//     book->setDecidesRow(true);
//     book->getChild()->selectAsColumn(KvbString("title", true), false);
//     KvbString query = model->genXQueryToColumns(true, false, true, false, &error);
//
// The library never runs a query; the host's XQuery processor does.
//
// Conventions
//   Failures: an operation that can fail returns false, null or an empty string. Where it takes `error`, the text of
//     the failure goes there, and `error` is left untouched on success. `error` must never be null.
//   Messages: "XDM<number>: <text>" for the numbered ones. Exhausted memory is message 29.
//   Exceptions: none leaves any operation of the interfaces. kvxdmCreateMain alone lets std::bad_alloc out.
//   Ownership: everything that is reached from a main object belongs to it. The host frees nothing and uses nothing
//     after release.
//   Threads: a main object and all that is reached from it are used by one thread at a time. Different main objects are
//     independent.
//   Limits: a model is at most 1,000 elements deep (999 when it comes from an XDM document, whose own root element
//     counts), and its XPaths together take at most 128 MiB and 1 KiB more for each node; beyond that an operation
//     fails as with exhausted memory.
//   ABI: hosts are compiled against the order of the operations below; it does not change.
#ifndef KVXDM_KVXDM_H
#define KVXDM_KVXDM_H

#include <memory>

#include <kvxbase/kvbstring.h>

#define KVXDM_API __attribute__((visibility("default")))  ///< Marks what libkvxdm exports.

class XDMAttribute;
class XDMColumn;
class XDMElement;
class XDMMain;
class XDMNamespace;
class XDMNode;

/**
 * The main object: one model of an XML vocabulary, with its selected columns.
 *
 * It is empty at first and is filled once, by loadFromFile, loadFromXML or createFromXMLMap. It ends with release.
 */
class XDMMain {
 public:
  /**
   * Ends the main object. Every pointer that was reached from it is dead afterwards.
   * The storage of the tree and of the columns is left behind on purpose.
   */
  virtual void release() = 0;

  /**
   * Fills the empty model from the XDM document in the file at `path`.
   * Returns true when the whole document was read. On false `*error` holds: message 1422 when the model has a root
   * already (nothing is changed); 1428 with the path when the file cannot be read as XML; otherwise what is wrong with
   * the document: 1425 no valid root, 1424 version, 1426 wrong first child, 1427 more than one child, 1439 a node
   * without name, "occurs value '...' is not numeric.", or 29 "(XDM Root)" for exhausted memory.
   * What was read before a failure stays in the model; release the object and make a new one to try again.
   */
  virtual bool loadFromFile(const KvbString& path, KvbString* error) = 0;

  /**
   * The same from the text of an XDM document, which is UTF-8 whatever its declaration says.
   * Failures as for loadFromFile, but 1429 (without argument) when the text is not well-formed XML.
   */
  virtual bool loadFromXML(const KvbString& xml, KvbString* error) = 0;

  /**
   * Writes the tree as an XDM document to the file at `path`, whole or not at all: after a failure an old file is as it
   * was. Columns and their settings are not part of the document.
   * On false `*error` holds: 1423 when the model is empty; 463 with the path when the file cannot be written; 1431,
   * 1432, 1435, 1437 or 1438 when a name, prefix or URI holds a character that XML does not allow; 29 "(XDM Root)" for
   * exhausted memory. The model is not changed.
   */
  virtual bool saveToFile(const KvbString& path, KvbString* error) = 0;

  /**
   * Writes the tree as the text of an XDM document into `*xml`, which must not be null.
   * On false `*xml` is as it was and `*error` holds a message as for saveToFile, with 1430 (no text could be made) in
   * the place of 463.
   */
  virtual bool saveToXML(KvbString* xml, KvbString* error) = 0;

  /**
   * Fills the empty model from one table of the XMLMap file `mapFile`: the tree, the element that decides the row and
   * the typed columns.
   *
   * `tableName`: the table; empty takes the first one.
   * `groupBy`: name=value pairs separated by white space, each value the name of a column to group by; the first one
   *   gets the highest group level. Empty for no grouping.
   * `flags`: 0x80000000 columns with retain="yes" take their group level from their distance to the row (ignored when
   *   `groupBy` is given); 0x40000000 accept the map's OUTPUT for this table whatever its TABLEREF says; 0x20000000
   *   make the attributes of the OUTPUT's HEADING attributes of the root. Other bits are ignored.
   *
   * Returns true when at least one column was selected. On false `*error` says what is wrong with which item of the map
   * (messages 472, 1414, 1415, 1420, 1422, 1423, 1440, 1443 to 1450 and 1452, those of selectAsColumn and of
   * XDMColumn::setXPath, "Failed to parse groupBy string '...' (...)", or 29 for exhausted memory); it can be empty for
   * a path with a brace that is never closed. An `*error` that was not empty before the call keeps its text when the
   * failure lies in the table's path, heading or columns.
   * What was built before a failure stays in the model; release the object and make a new one to try again.
   */
  virtual bool createFromXMLMap(const KvbString& mapFile, const KvbString& tableName, const KvbString& groupBy,
                                unsigned int flags, KvbString* error) = 0;

  /**
   * The name of the variable from which generated queries take their collection; empty when the main object was made
   * without flag 0x80000000, and queries then read the context document.
   */
  virtual KvbString getCollectionVariableName() = 0;

  /** The root element; null (and a log event) when the model is empty. */
  virtual XDMElement* getRootNode() = 0;

  /** The number of selected columns; 0 (and a log event) when the model is empty. */
  virtual int getSelectedColumns() = 0;

  /** The column at `index`, from 0, in the order of selection; null out of range or when the model is empty. */
  virtual XDMColumn* getSelectedColumn(int index) = 0;

  /**
   * The XQuery that rebuilds a document from rows ("/table/row").
   *
   * `streaming`: true writes no option line; false declares that the processor shall not stream.
   * `groupRows`: true groups the rows by the columns that carry a group level.
   *
   * Returns the text, or an empty string. Then `*error` holds 1423 (empty model), 1441 (no column selected), 1442 (a
   * prefix with two URIs) or 29 (exhausted memory).
   */
  virtual KvbString genXQueryFromColumns(bool streaming, bool groupRows, KvbString* error) = 0;

  /**
   * The XQuery that turns documents into a `table` of `row` elements, one for each occurrence of the element that
   * decides the row, with one child for each selected column.
   *
   * `streaming`: true writes no option line; false declares that the processor shall not stream.
   * `sequenceArgument`: whether a column may meet several elements in a row (their texts are joined) or only one.
   * `relativeLets`: whether columns outside the row are reached from the row, or by their absolute path.
   * `keepWhitespace`: whether element text is kept as it is, or normalised.
   *
   * Returns the text, or an empty string. Then `*error` holds 1423 (empty model), 1441 (no column selected), 1442 (a
   * prefix with two URIs), "No element decides the row." or 29 "(XQuery)" (exhausted memory).
   */
  virtual KvbString genXQueryToColumns(bool streaming, bool sequenceArgument, bool relativeLets, bool keepWhitespace,
                                       KvbString* error) = 0;
};

/**
 * What elements and attributes have in common. Nodes belong to their model and live until it is released.
 *
 * The getters from getDefault to getXPath read what the node itself carries; a column selected from it starts with
 * these values.
 */
class XDMNode {
 public:
  /** 0 for an attribute, 1 for an element. (The numbering is not that of the DOM.) */
  virtual int nodeType() = 0;

  /** The first child element; null when there is none, and for every attribute. */
  virtual XDMElement* getChild() = 0;

  /** The main object of the model. */
  virtual XDMMain* getMain() = 0;

  /**
   * For an element the next child of the same parent, null for the last one and for the root; for an attribute the next
   * attribute of the same element, null for the last one.
   */
  virtual XDMNode* getNextSibling() = 0;

  /** For an element the parent, null for the root; for an attribute the element that carries it. */
  virtual XDMElement* getParent() = 0;

  /** The default value, empty without one. */
  virtual KvbString getDefault() = 0;

  /** The output format, empty without one. */
  virtual KvbString getFormat() = 0;

  /** The input format, empty without one. */
  virtual KvbString getInformat() = 0;

  /** The name without prefix. */
  virtual KvbString getLocalName() = 0;

  /** The maximum length of a character value; 0 when it is not known or the type is not 4. */
  virtual int getMaximumLength() = 0;

  /** The namespace declaration that qualifies the name; null without one. */
  virtual XDMNamespace* getNamespace() = 0;

  /** The data type: 4 for a new element, 0 for a new attribute. */
  virtual kvbType getType() = 0;

  /** The valid value at `index`, from 0; an empty string out of range. */
  virtual KvbString getValidValue(int index) = 0;

  /** The number of valid values. */
  virtual int getValidValues() = 0;

  /** The absolute XPath of the node, as it was when the node was made. */
  virtual KvbString getXPath() = 0;

  /**
   * Selects the node as a column, behind the columns selected before. A node can be selected more than once.
   * `name`: the column's name; empty makes one from the local name (price, price1, price2, ...).
   * `isGroupBy`: whether rows are grouped by the column.
   * Returns the column, or null when the name is in use or could not be made (267), the column could not be added
   * (1433) or memory is exhausted (29 "(Selected Column)"); the interface has no place for these texts.
   */
  virtual XDMColumn* selectAsColumn(const KvbString& name, bool isGroupBy) = 0;
};

/** An element of the model. */
class XDMElement : public XDMNode {
 public:
  /** Whether the occurrences of this element make the rows. */
  virtual bool getDecidesRow() = 0;

  /** How often the element may occur. */
  virtual int getMaxOccurrences() = 0;

  /** The number of namespace declarations made on this element. */
  virtual int getNamespaces() = 0;

  /** The attribute after `previous`, the first one for null; null after the last one and for an attribute of another
   * element. */
  virtual XDMAttribute* getNextAttribute(XDMAttribute* previous) = 0;

  /** The same walk over the namespace declarations made on this element. */
  virtual XDMNamespace* getNextNamespace(XDMNamespace* previous) = 0;

  /**
   * Sets whether this element decides the row. At most one element of a model does: setting it here clears it on the
   * element that did. Clearing it on an element that does not decide the row also clears it on the one that does.
   * Returns whether this element decides the row now.
   */
  virtual bool setDecidesRow(bool decides) = 0;
};

/** An attribute of the model. It adds nothing to a node. */
class XDMAttribute : public XDMNode {};

/** A namespace declaration made on an element. */
class XDMNamespace {
 public:
  /** The next declaration made on the same element; null after the last one. */
  virtual XDMNamespace* getNextSibling() = 0;

  /** The element on which the declaration is made. */
  virtual XDMElement* getParent() = 0;

  /** The prefix; empty or null for a default namespace. */
  virtual KvbString getPrefix() = 0;

  /** The namespace URI. */
  virtual KvbString getURI() = 0;
};

/**
 * A selected column. It belongs to the main object. Where it has no value of its own, a getter answers with the node's,
 * as each says.
 */
class XDMColumn {
 public:
  /** The default value: its own when not empty, else the node's. */
  virtual KvbString getDefault() = 0;

  /** The output format: its own when not empty, else the node's. */
  virtual KvbString getFormat() = 0;

  /** The input format: its own when not empty, else the node's. */
  virtual KvbString getInformat() = 0;

  /** 0 for no grouping, otherwise the group level: 1 from this interface, 1 and above from an XMLMap. */
  virtual int getIsGroupBy() = 0;

  /** The maximum length: 0 unless the column's type is 4; its own when not 0, else the node's. */
  virtual int getMaximumLength() = 0;

  /** The column's name. */
  virtual KvbString getName() = 0;

  /** The node that was selected. */
  virtual XDMNode* getNode() = 0;

  /** The data type: its own, at first the one that the node had when it was selected. */
  virtual kvbType getType() = 0;

  /** The valid value at `index`, from 0, of its own values if it has any, else of the node's; empty out of range. */
  virtual KvbString getValidValue(int index) = 0;

  /** The number of valid values: its own when not 0, else the node's. */
  virtual int getValidValues() = 0;

  /** The XPath: its own when not empty, else the node's. */
  virtual KvbString getXPath() = 0;

  /**
   * Adds a valid value behind the others; the node's values are copied into the column first if it has none of its own.
   * Duplicates are kept. On false `*error` holds 1434 or 29 "(Valid Value)"; the values so far stay.
   */
  virtual bool addValidValue(const KvbString& value, KvbString* error) = 0;

  /**
   * Sets the default value. Returns false, with the old default kept and `*error` left untouched, when the column has
   * valid values of its own and `value` is none of them.
   */
  virtual bool setDefault(const KvbString& value, KvbString* error) = 0;

  /** Sets the output format; empty lets the node's show through. */
  virtual void setFormat(const KvbString& format) = 0;

  /** Sets the input format; empty lets the node's show through. */
  virtual void setInformat(const KvbString& informat) = 0;

  /** Sets whether rows are grouped by this column: the group level becomes 1 or 0. */
  virtual void setIsGroupBy(bool isGroupBy) = 0;

  /** Sets the maximum length, as given; 0 lets the node's show through. */
  virtual void setMaximumLength(int length) = 0;

  /** Renames the column. Neither the new name is checked nor the old one freed for another column. */
  virtual void setName(const KvbString& name) = 0;

  /** Sets the data type, as given. */
  virtual void setType(kvbType type) = 0;

  /**
   * Gives the column an XPath of its own. Its steps, predicates cut off, must lead from the root down the tree; a last
   * step that begins with "@" is not looked up. On false the old XPath stays and `*error` holds 1425 (empty model),
   * 1445 with the step that was not found, or 29 "(XPath step array)" or "(XPath step)".
   */
  virtual bool setXPath(const KvbString& xpath, KvbString* error) = 0;
};

/**
 * The list behind every collection of a model: an ordered array of pointers that it does not own. No operation of the
 * interfaces hands one out; hosts use the counts and getters above. It grows by ten slots at a time, and its searches
 * go from the front.
 */
class XDMList {
 public:
  XDMList() noexcept : capacity_(0), count_(0), items_(nullptr) {}
  ~XDMList() { release(); }
  XDMList(const XDMList&) = delete;
  XDMList& operator=(const XDMList&) = delete;

  /** The number of items. */
  int getCount() const noexcept { return count_; }

  /** The item at `index`; null when `index` is negative or not below the count. */
  void* getItem(int index) const noexcept { return index < 0 || index >= count_ ? nullptr : items_[index]; }

  /** The first item for null, otherwise the item after the first occurrence of `item`; null when there is none. */
  void* getNextItem(void* item) const noexcept;

  /** Adds `item` at the end. False, with nothing changed, when memory is exhausted. */
  bool appendItem(void* item) noexcept;

  /** Adds `item` directly after the first occurrence of `after`, at the end when `after` is absent. False as above. */
  bool insertItem(void* item, void* after) noexcept;

  /** Adds `item` at position `index`, from 0 to the count; for owners that know the place. False as above. */
  bool insertItemAt(int index, void* item) noexcept;

  /** Takes the item at `index` out and returns it; null, with nothing changed, out of range. */
  void* removeItem(int index) noexcept;

  /** Takes the first occurrence of `item` out, if there is one. */
  void removeItem(void* item) noexcept;

  /** Swaps the first occurrence of `item` with the item before it, if there is one. */
  void moveUp(void* item) noexcept;

  /** Swaps the first occurrence of `item` with the item after it, if there is one. */
  void moveDown(void* item) noexcept;

  /** Frees the array; the list is as new. */
  void release() noexcept;

 private:
  int indexOf(const void* item) const noexcept;
  bool grow() noexcept;

  int capacity_;
  int count_;
  void** items_;
};

extern "C" {

/**
 * Makes a main object. Of `flags` only 0x80000000 counts: with it, generated queries read the collection named by a
 * variable (getCollectionVariableName).
 * Returns the object, which the caller ends with release. Throws std::bad_alloc on exhausted memory. Safe from any
 * thread.
 */
KVXDM_API XDMMain* kvxdmCreateMain(unsigned int flags);

/** The build number of the library. */
extern KVXDM_API const int kvx_build_number;

/** The library's name, version and build in one line. */
extern KVXDM_API const char* const kvx_build_info;

/** The library's version. */
extern KVXDM_API const char* const kvx_build_version;
}

/** Ends a main object; for std::unique_ptr. A null pointer is left alone. */
struct XDMMainRelease {
  /** Releases `main` unless it is null. */
  void operator()(XDMMain* main) const {
    if (main) main->release();
  }
};

/** A main object that is released with its owner. */
typedef std::unique_ptr<XDMMain, XDMMainRelease> XDMMainPtr;

#endif

// XML documents in memory: the only door through which the library reads and writes XML.
// Tested by tests/unit/kvdom_read_test.cpp and tests/unit/kvdom_write_test.cpp.
#ifndef KVXDOM_KVDOM_H
#define KVXDOM_KVDOM_H

#include <kvxbase/kvbstring.h>
#include <kvxdom/kvxdom_export.h>

struct KvDomTree;
struct KvDomElement;

/**
 * A handle to an element of a KvDom, copied by value. It is valid only while its document lives and is not loaded or
 * started anew. Names are as written, with any prefix; there is no namespace processing. Texts are UTF-8. Whether a
 * name to write is an XML name is told by its ASCII characters; all others are taken.
 *
 * No operation throws, getValue() apart. A null handle answers null strings, null handles and false.
 */
class KVXDOM_API KvDomNode {
 public:
  /** A null handle. */
  KvDomNode() noexcept : tree_(nullptr), element_(nullptr) {}

  /** Whether this is a null handle. */
  bool null() const noexcept { return element_ == nullptr; }

  /** The element's name as written. */
  KvbString getName() const noexcept;

  /** The value of attribute `name`; a null string without one, an empty string for an empty value. */
  KvbString getAttributeValue(const KvbString& name) const noexcept;

  /**
   * Sets attribute `name` to `value`, behind the attributes set before; an attribute that is there keeps its place.
   * Returns false, with nothing changed, when `name` is not an XML name, when `value` is not UTF-8 or holds a character
   * that XML 1.0 forbids, or when memory is exhausted.
   */
  bool setAttributeValue(const KvbString& name, const KvbString& value) noexcept;

  /** Appends a child element and returns it; null when `name` is not an XML name or memory is exhausted. */
  KvDomNode addChild(const KvbString& name) noexcept;

  /** The first child element, null without one. The flag is ignored. */
  KvDomNode getFirstChild(bool flag) const noexcept;

  /** The next element of the same parent, null at the end. The flag is ignored. */
  KvDomNode getNextSibling(bool flag) const noexcept;

  /**
   * The text content: all character data inside the element and its descendants, in document order. Empty without any.
   * The flag is ignored. Throws std::bad_alloc on exhausted memory.
   */
  KvbString getValue(bool flag) const;

  /** Detaches the element from its document; this handle becomes null. The root is not detached. */
  void remove() noexcept;

  /** The line of the document in which the element's start tag ends; 0 for an element that was not read. */
  int getLine() const noexcept;

 private:
  friend class KvDom;
  KvDomNode(KvDomTree* tree, KvDomElement* element) noexcept : tree_(tree), element_(element) {}

  KvDomTree* tree_;
  KvDomElement* element_;
};

/**
 * One XML document. The object owns the tree.
 *
 * Reading: a document comes from the path or the text given and from nowhere else. No external DTD subset and no
 * external entity is opened. A document type declaration is accepted; an entity declaration is refused before it can be
 * used. Limits, each refused at one above: nesting of 1,000 elements, 1,000 attributes on an element, 10,000,000 bytes
 * of UTF-8 in one attribute value or run of text, 1 GiB and 50,000,000 elements in a document.
 *
 * No operation throws. Different documents may be used from different threads; one document is used by one thread at a
 * time.
 */
class KVXDOM_API KvDom {
 public:
  KvDom() noexcept;
  ~KvDom();
  KvDom(const KvDom&) = delete;
  KvDom& operator=(const KvDom&) = delete;

  /** Reads the document in the file at `path`, in the encoding that it declares. False on failure. */
  bool loadFile(const KvbString& path) noexcept;

  /** Reads the document in `text`, which is UTF-8 whatever its declaration says. False on failure. */
  bool loadXML(const KvbString& text) noexcept;

  /** Begins a document with a root element of that name. False for anything but an XML name and without memory. */
  bool startNewDocument(const KvbString& rootName) noexcept;

  /** The root element; null before a document was read or started and after a failure to do so. */
  KvDomNode getRoot() const noexcept;

  /**
   * Writes the document from `root` down to the file at `path`, whole or not at all (KvbOutputFile). With `indent` the
   * file starts with an XML declaration in UTF-8 and elements without text stand on lines of their own, indented.
   * False on failure.
   */
  bool createFile(const KvbString& path, bool indent, const KvDomNode& root) noexcept;

  /** The same as a text. A null string on failure. */
  KvbString createXML(bool indent, const KvDomNode& root) noexcept;

  /** The reason of the last failure, with line and column when the document was at fault; empty after a success. */
  KvbString getErrorMessage() const noexcept;

 private:
  KvDomTree* tree_;
  KvbString error_;
};

#endif

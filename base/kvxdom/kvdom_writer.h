// Writes a tree as XML.
// Tested by tests/unit/kvdom_write_test.cpp.
#ifndef KVXDOM_KVDOM_WRITER_H
#define KVXDOM_KVDOM_WRITER_H

#include <kvxbase/kvbstring.h>
#include <kvxdom/kvdom_tree.h>

#include <cstddef>

/** Where a document is written. */
class KvDomSink {
 public:
  /** Takes `length` bytes; false when it cannot. */
  virtual bool write(const char* bytes, std::size_t length) noexcept = 0;

 protected:
  ~KvDomSink() = default;
};

enum class KvDomWriting { done, sinkFailed, forbiddenCharacter };

/**
 * Writes the document from `root` down. With `indent` it begins with an XML declaration and each element stands on a
 * line of its own; an element with text of its own is written as it is, since blanks inside it would change that text.
 */
KvDomWriting kvdomWrite(const KvDomTree& tree, const KvDomElement& root, bool indent, KvDomSink& sink) noexcept;

#endif

// Reads XML into a tree. The reader's source is the only code that knows Xerces-C.
// Tested by tests/unit/kvdom_read_test.cpp and tests/unit/kvdom_xerces_host_test.cpp.
#ifndef KVXDOM_KVDOM_READER_H
#define KVXDOM_KVDOM_READER_H

#include <kvxbase/kvbstring.h>
#include <kvxdom/kvdom_tree.h>

#include <cstddef>
#include <memory>

/** The most that a document may hold; each is accepted at the limit and refused at one above. */
struct KvDomLimits {
  std::size_t depth = 1'000;            // elements inside each other, the root counts
  std::size_t attributes = 1'000;       // on one element, defaulted ones count
  std::size_t textBytes = 10'000'000;   // UTF-8 in one attribute value or in the text between two tags
  std::size_t documentBytes = 1 << 30;  // read; also UTF-8 of text and attributes, which defaults in a DTD multiply
  std::size_t elements = 50'000'000;
};

/** Reads the document in the file at `path`. Null on failure, with the reason in `*error`. Throws std::bad_alloc only.
 */
std::unique_ptr<KvDomTree> kvdomReadFile(const KvbString& path, KvbString* error, const KvDomLimits& limits = {});

/** The same for the document in `text`, which is UTF-8 whatever its declaration says. */
std::unique_ptr<KvDomTree> kvdomReadText(const KvbString& text, KvbString* error, const KvDomLimits& limits = {});

#endif

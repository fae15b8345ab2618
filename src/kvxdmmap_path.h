// Location paths of an XMLMap, turned into nodes of the model.
// Tested by tests/unit/kvxdmmap_path_test.cpp and kvxdmmap_enr_test.cpp.
#ifndef KVXDM_SRC_KVXDMMAP_PATH_H
#define KVXDM_SRC_KVXDMMAP_PATH_H

#include <string_view>

#include <kvxdm/kvxdm.h>
#include <kvxdom/kvdom.h>

class XDMMainImpl;

namespace xmlmap {

/** One step of a location path, taken apart. What the step does not have is a null string. */
struct LocationStep {
  explicit LocationStep(std::string_view written) noexcept : text(written) {}

  std::string_view text;  // as written
  bool isAttribute = false;
  KvbString reference;  // what stands between braces, in an extended path
  KvbString prefix;
  KvbString localName;
  KvbString predicate;  // with its brackets
};

/** Takes apart a step of a plain path: prefix, local name and predicate. A leading "@" is dropped. Never fails. */
bool separateXPathStep(LocationStep* step);

/**
 * Takes apart a step of an extended path: namespace reference, local name and predicate. A leading "@" is dropped.
 * False when the step opens a brace and does not close it around at least one character.
 */
bool separateXPathENRStep(LocationStep* step);

/** Whether a "HEADING" attribute of that name declares a namespace. */
bool isNamespaceEntry(const KvbString& name);

/**
 * Finds or makes the nodes of a plain path. The root, when it is made, gets the "xmlns" entries of the first "HEADING"
 * in `output`, which may be a null handle. Elements on a column's path are marked as visited, those on a table's are
 * not.
 * Returns the node at the end; null with the main object's error message set. Nodes made before a failure stay.
 */
XDMNode* buildFromXPath(XDMMainImpl* main, const KvbString& path, const KvDomNode& output, bool isTablePath);

/**
 * The same for an extended path, whose steps name their namespaces by the numbers of `namespaces`; they are declared on
 * the root when it is made. On success `*path` becomes the path with prefixes in place of the numbers.
 * A brace that is not closed fails without a message.
 */
XDMNode* buildFromXPathENR(XDMMainImpl* main, KvbString* path, const KvDomNode& namespaces, bool isTablePath);

}  // namespace xmlmap

#endif

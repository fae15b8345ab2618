// The files that a command reads: what stands in their prolog, and a path that another program can open.
// Tested by tests/tool/xdm_rows_test.cpp.
#ifndef XDM_SOURCES_H
#define XDM_SOURCES_H

#include <kvxdom/kvdom.h>

#include <cstdint>
#include <string>
#include <vector>

#include "files.h"

/** Something outside a document that the document asks for. */
struct ExternalPart {
  std::string what;  // "the DTD", "the entity 'x'"
  std::string systemId;
};

/** What a document says before its root element ends its prolog. */
struct Prolog {
  std::string rootName;  // as written; empty when there is none
  std::vector<ExternalPart> externals;
};

/** Reads the prolog of `file` from its position on; what is not XML has an empty one. */
Prolog readProlog(std::FILE* file);

/** A file that a command reads. */
struct Source {
  std::string name;  // what messages call it
  std::string path;  // an absolute path of a regular file
  std::uintmax_t size;
  Prolog prolog;
};

/** Why `document` could not be read from the file at `path`, which the DOM service names only where it can't open it.
 */
std::string reasonOf(const KvDom& document, const std::string& path);

/** What messages call a file that the user gave: "-" is standard input. */
std::string titleOf(const std::string& name);

/** "-" stands for standard input. What is no regular file, such as a pipe, is copied into `folder`. Throws Failure. */
std::string regularFile(const std::string& name, const TemporaryFolder& folder);
Source openSource(const std::string& name, const TemporaryFolder& folder);

/** The sources of a collection: a folder stands for its *.xml files, sorted by name. */
std::vector<Source> openCollection(const std::vector<std::string>& names, const TemporaryFolder& folder);

/** The local file that `part` of a document in the file at `path` means; empty when it is missing or lies elsewhere. */
std::string findLocally(const ExternalPart& part, const std::string& path);

/** Whether where `part` lies depends on where the document lies. */
bool isRelative(const ExternalPart& part);

#endif

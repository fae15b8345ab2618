// The least that any program would do with the same bytes, and what other parsers do with them.
#ifndef KVXDM_BENCH_FLOORS_H
#define KVXDM_BENCH_FLOORS_H

#include <string>
#include <string_view>
#include <vector>

/** Scans XML with Xerces-C, set as the library sets it, and an empty handler. */
void scan(const std::string& text);

/** Makes a tree of it with pugixml, or with libxml2. */
void parseWithPugixml(const std::string& text);
void parseWithLibxml2(const std::string& text);

/** `text` without a character that needs an escape, so that escaping it gives as many bytes. */
std::string withoutEscapes(std::string text);

/** Copies `text` into the file, looking at each byte for one to escape. */
void writeEscaped(const std::string& text, const std::string& path);

/** The words and the punctuation of a query. */
std::vector<std::string_view> tokensOf(std::string_view query);

/** Writes them into a buffer that grows. */
void appendAll(const std::vector<std::string_view>& tokens);

/** Inserts the names into a std::map. */
void insertAll(const std::vector<std::string>& names);

#endif

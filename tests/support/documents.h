// Compares XML documents as trees.
#ifndef KVXDM_TESTS_DOCUMENTS_H
#define KVXDM_TESTS_DOCUMENTS_H

#include <map>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

/** Whether text that is white space only counts. */
enum class Blanks { keep, ignore };

namespace documents {

/** The URI bound to `prefix` at `node`, empty without one. */
inline std::string uriOf(pugi::xml_node node, const std::string& prefix) {
  const std::string declaration = prefix.empty() ? "xmlns" : "xmlns:" + prefix;
  for (; node; node = node.parent()) {
    if (pugi::xml_attribute found = node.attribute(declaration.c_str())) return found.value();
  }
  return prefix == "xml" ? "xml" : "";
}

/** The name with its namespace in the place of its prefix. An attribute without prefix is in none. */
inline std::string expandedName(pugi::xml_node scope, const std::string& name, bool attribute) {
  const auto colon = name.find(':');
  const std::string prefix = colon == std::string::npos ? "" : name.substr(0, colon);
  const std::string uri = attribute && prefix.empty() ? "" : uriOf(scope, prefix);
  return "{" + uri + "}" + name.substr(colon == std::string::npos ? 0 : colon + 1);
}

inline bool isDeclaration(std::string_view name) { return name == "xmlns" || name.substr(0, 6) == "xmlns:"; }

inline void outline(pugi::xml_node node, Blanks blanks, const std::string& indent, std::string& out) {
  if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
    const std::string_view text = node.value();
    if (blanks == Blanks::ignore && text.find_first_not_of(" \t\r\n") == std::string_view::npos) return;
    out += indent + "\"" + std::string(text) + "\"\n";
  }
  if (node.type() != pugi::node_element) return;
  out += indent + expandedName(node, node.name(), false) + "\n";
  std::map<std::string, std::string> attributes;
  for (pugi::xml_attribute attribute : node.attributes()) {
    if (!isDeclaration(attribute.name())) {
      attributes[expandedName(node, attribute.name(), true)] = attribute.value();
    }
  }
  for (const auto& [name, value] : attributes) out += indent + "  @" + name + "=" + value + "\n";
  for (pugi::xml_node child : node.children()) outline(child, blanks, indent + "  ", out);
}

}  // namespace documents

/**
 * The tree of a document, one node a line: elements, attributes by name and texts, the names with their namespaces.
 * Declarations, comments and processing instructions are no part of it. Throws std::runtime_error for malformed text.
 */
inline std::string treeOf(std::string_view xml, Blanks blanks = Blanks::keep) {
  pugi::xml_document document;
  auto parsed = document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  if (!parsed) throw std::runtime_error(std::string(parsed.description()) + ": " + std::string(xml));
  std::string out;
  documents::outline(document.document_element(), blanks, "", out);
  return out;
}

#endif

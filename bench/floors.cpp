// The least that any program would do with the same bytes, and what other parsers do with them.
#include "floors.h"

#include <libxml/parser.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <pugixml.hpp>
#include <stdexcept>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/SAX2XMLReaderImpl.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "case.h"

namespace {

namespace xercesc = XERCES_CPP_NAMESPACE;

/** Begins Xerces-C once and for all. */
void useXerces() {
  static const bool begun = (xercesc::XMLPlatformUtils::Initialize(), true);
  static_cast<void>(begun);
}

std::string_view escapeOf(char byte) {
  switch (byte) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    default:
      return "";
  }
}

bool isWordByte(char byte) { return std::isalnum(static_cast<unsigned char>(byte)); }

}  // namespace

void scan(const std::string& text) {
  useXerces();
  xercesc::SAX2XMLReaderImpl reader;
  reader.setFeature(xercesc::XMLUni::fgSAX2CoreNameSpaces, false);
  reader.setFeature(xercesc::XMLUni::fgSAX2CoreValidation, false);
  reader.setFeature(xercesc::XMLUni::fgXercesSchema, false);
  reader.setFeature(xercesc::XMLUni::fgXercesLoadExternalDTD, false);
  reader.setFeature(xercesc::XMLUni::fgXercesDisableDefaultEntityResolution, true);
  xercesc::DefaultHandler handler;
  reader.setContentHandler(&handler);
  reader.setErrorHandler(&handler);
  xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "");
  reader.parse(source);
}

void parseWithPugixml(const std::string& text) {
  pugi::xml_document document;
  if (!document.load_buffer(text.data(), text.size())) throw std::runtime_error("pugixml refuses the document");
}

void parseWithLibxml2(const std::string& text) {
  xmlDocPtr document = xmlReadMemory(text.data(), static_cast<int>(text.size()), "", nullptr, XML_PARSE_HUGE);
  if (!document) throw std::runtime_error("libxml2 refuses the document");
  xmlFreeDoc(document);
}

std::string withoutEscapes(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char byte) { return !escapeOf(byte).empty(); }, 'x');
  return text;
}

void writeEscaped(const std::string& text, const std::string& path) {
  std::ofstream file(path, std::ios::binary);
  std::string buffer;
  for (std::size_t i = 0, plain = 0; i < text.size(); ++i) {
    const std::string_view escape = escapeOf(text[i]);
    const bool lineEnds = text[i] == '\n';
    if (escape.empty() && !lineEnds) continue;
    buffer.append(text, plain, i + lineEnds - plain).append(escape);
    plain = i + 1;
    if (buffer.size() < 16 * 1024) continue;
    file.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    buffer.clear();
  }
  file.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
}

std::vector<std::string_view> tokensOf(std::string_view query) {
  std::vector<std::string_view> tokens;
  while (!query.empty()) {
    const bool isWord = isWordByte(query.front());
    const auto end = std::find_if(query.begin(), query.end(), [&](char byte) { return isWordByte(byte) != isWord; });
    tokens.push_back(query.substr(0, static_cast<std::size_t>(end - query.begin())));
    query.remove_prefix(tokens.back().size());
  }
  return tokens;
}

void appendAll(const std::vector<std::string_view>& tokens) {
  std::string buffer;
  for (std::string_view token : tokens) buffer += token;
  keep(static_cast<long>(buffer.size()));
}

void insertAll(const std::vector<std::string>& names) {
  std::map<std::string, long> map;
  for (const std::string& name : names) map.emplace(name, 0);
  keep(static_cast<long>(map.size()));
}

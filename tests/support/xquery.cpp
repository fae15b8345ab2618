#include "xquery.h"

#include <pugixml.hpp>
#include <stdexcept>

#include "temporary.h"

namespace {

std::vector<std::string> saxonCommand(const std::string& query, const std::string& input,
                                      const std::vector<std::pair<std::string, std::string>>& variables) {
  std::vector<std::string> command = {"java",        "-cp",       "/usr/share/java/Saxon-HE.jar", "net.sf.saxon.Query",
                                      "-q:" + query, "!indent=no"};
  command.push_back("--parserFeature?uri=http%3A//apache.org/xml/features/nonvalidating/load-external-dtd:false");
  if (!input.empty()) command.push_back("-s:" + input);
  for (const auto& [name, value] : variables) command.push_back(name + "=" + value);
  return command;
}

std::vector<std::string> basexCommand(const std::string& query, const std::string& input, const TemporaryFolder& home,
                                      const std::vector<std::pair<std::string, std::string>>& variables) {
  // BaseX 9.7.2 goes wrong when it puts its text index into a loop ("Item expected, sequence found"), so none is made.
  std::vector<std::string> command = {"java",
                                      "-Dorg.basex.path=" + home.path().string(),
                                      "-Dorg.basex.textindex=false",
                                      "-cp",
                                      "/usr/share/java/basex.jar",
                                      "org.basex.BaseX",
                                      "-w",
                                      "-sindent=no"};
  if (!input.empty()) command.push_back("-i" + input);
  for (const auto& [name, value] : variables) command.push_back("-b" + name + "=" + value);
  command.push_back(query);
  return command;
}

std::string localName(std::string_view name) { return std::string(name.substr(name.find(':') + 1)); }

}  // namespace

const char* nameOf(Processor processor) { return processor == Processor::saxon ? "Saxon" : "BaseX"; }

ProcessResult runQueryOnFile(Processor processor, std::string_view query, const std::string& input,
                             const std::vector<std::pair<std::string, std::string>>& variables) {
  TemporaryFolder folder;
  std::string queryFile = folder.write("query.xq", query);
  return runProcess(processor == Processor::saxon ? saxonCommand(queryFile, input, variables)
                                                  : basexCommand(queryFile, input, folder, variables));
}

ProcessResult runQuery(Processor processor, std::string_view query, std::string_view xml,
                       const std::vector<std::pair<std::string, std::string>>& variables) {
  TemporaryFolder folder;
  return runQueryOnFile(processor, query, folder.write("input.xml", xml), variables);
}

Rows rowsOf(std::string_view xml) {
  pugi::xml_document document;
  auto parsed = document.load_buffer(xml.data(), xml.size(), pugi::parse_default | pugi::parse_ws_pcdata);
  pugi::xml_node table = document.document_element();
  if (!parsed || localName(table.name()) != "table") throw std::runtime_error("not a table: " + std::string(xml));
  Rows rows;
  for (pugi::xml_node row : table.children()) {
    if (row.type() != pugi::node_element) continue;
    if (localName(row.name()) != "row") throw std::runtime_error("not a row: " + std::string(row.name()));
    Row& cells = rows.emplace_back();
    for (pugi::xml_node cell : row.children()) {
      if (cell.type() == pugi::node_element) cells.emplace_back(localName(cell.name()), cell.text().get());
    }
  }
  return rows;
}

Rows runRows(Processor processor, std::string_view query, std::string_view xml,
             const std::vector<std::pair<std::string, std::string>>& variables) {
  ProcessResult result = runQuery(processor, query, xml, variables);
  if (result.status != 0) throw std::runtime_error(std::string(nameOf(processor)) + ": " + result.error);
  return rowsOf(result.output);
}

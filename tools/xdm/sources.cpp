#include "sources.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "diagnostics.h"
#include "text.h"
#include "xml_reader.h"

namespace fs = std::filesystem;

namespace {

class PrologReader : public XmlReader {
 public:
  PrologReader() : XmlReader(Kind::prolog) {}
  Prolog prolog;

 private:
  void onStart(const XmlName& name) override {
    prolog.rootName = name.local;
    stop();
  }
  void onExternalDtd(std::string_view systemId) override { add("the DTD", systemId); }
  void onExternalEntity(std::string_view name, std::string_view systemId) override {
    add("the entity '" + std::string(name) + "'", systemId);
  }
  void add(std::string what, std::string_view systemId) {
    prolog.externals.push_back({std::move(what), std::string(systemId)});
  }
};

// The scheme of a URI, in lower case; one letter is none.
std::string schemeOf(std::string_view text) {
  std::size_t end = text.find(':');
  if (end == std::string_view::npos || end < 2 || text.substr(0, end).find('/') != std::string_view::npos) return "";
  std::string scheme(text.substr(0, end));
  std::transform(scheme.begin(), scheme.end(), scheme.begin(), [](unsigned char c) { return std::tolower(c); });
  return scheme;
}

std::string percentDecoded(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool escape = text[i] == '%' && i + 2 < text.size() && std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
                  std::isxdigit(static_cast<unsigned char>(text[i + 2]));
    decoded += escape ? static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16)) : text[i];
    if (escape) i += 2;
  }
  return decoded;
}

// The path of a "file:" URI; none when it names another machine.
std::optional<std::string> pathOfFileUri(std::string_view uri) {
  std::string_view rest = uri.substr(uri.find(':') + 1);
  if (rest.substr(0, 2) == "//") rest.remove_prefix(std::min(rest.find('/', 2), rest.size()));
  bool isHere = uri.substr(uri.find(':') + 1) == rest || uri.substr(uri.find(':') + 1, 3) == "///";
  if (!isHere || rest.empty() || rest[0] != '/') return std::nullopt;
  return percentDecoded(rest);
}

std::uintmax_t sizeOf(const std::string& path) {
  std::error_code unknown;
  std::uintmax_t size = fs::file_size(path, unknown);
  return unknown ? 0 : size;
}

std::vector<std::string> xmlFilesOf(const std::string& folder) {
  std::vector<std::string> files;
  std::error_code problem;
  for (fs::directory_iterator entry(folder, problem), end; !problem && entry != end; entry.increment(problem)) {
    if (entry->path().extension() == ".xml" && !entry->is_directory()) files.push_back(entry->path());
  }
  if (problem) throw Failure("cannot read the folder '" + folder + "': " + problem.message());
  if (files.empty()) throw Failure("the folder '" + folder + "' holds no *.xml file");
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

Prolog readProlog(std::FILE* file) {
  PrologReader reader;
  reader.read(file);
  return reader.prolog;
}

std::string reasonOf(const KvDom& document, const std::string& path) {
  std::string reason = toStd(document.getErrorMessage());
  std::string prefix = path + ": ";
  return reason.starts_with(prefix) ? reason.substr(prefix.size()) : reason;
}

std::string titleOf(const std::string& name) { return name == "-" ? "standard input" : name; }

std::string regularFile(const std::string& name, const TemporaryFolder& folder) {
  std::string path = name == "-" ? "/dev/stdin" : name;
  std::error_code unknown;
  if (fs::is_directory(path, unknown)) throw Failure("cannot read '" + name + "': it is a folder");
  if (fs::is_regular_file(path, unknown) && name != "-") return fs::absolute(path);
  File from = openForReading(path, titleOf(name));
  return folder.copy(from.get());
}

Source openSource(const std::string& name, const TemporaryFolder& folder) {
  std::string path = regularFile(name, folder);
  File file = openForReading(path, name);
  return {titleOf(name), path, sizeOf(path), readProlog(file.get())};
}

std::vector<Source> openCollection(const std::vector<std::string>& names, const TemporaryFolder& folder) {
  std::vector<Source> sources;
  for (const std::string& name : names) {
    std::error_code unknown;
    if (fs::is_directory(name, unknown)) {
      for (const std::string& file : xmlFilesOf(name)) sources.push_back(openSource(file, folder));
    } else {
      sources.push_back(openSource(name, folder));
    }
  }
  return sources;
}

std::string findLocally(const ExternalPart& part, const std::string& path) {
  std::string scheme = schemeOf(part.systemId);
  if (!scheme.empty() && scheme != "file") return "";
  std::optional<std::string> local = scheme.empty()
                                         ? (fs::path(path).parent_path() / percentDecoded(part.systemId)).string()
                                         : pathOfFileUri(part.systemId);
  std::error_code unknown;
  return local && fs::is_regular_file(*local, unknown) ? *local : "";
}

bool isRelative(const ExternalPart& part) { return schemeOf(part.systemId).empty() && part.systemId[0] != '/'; }

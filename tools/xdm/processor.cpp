#include "processor.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "diagnostics.h"
#include "text.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* saxonJar = "/usr/share/java/Saxon-HE.jar";
constexpr const char* basexJar = "/usr/share/java/basex.jar";
constexpr const char* queryName = "query.xq";

std::string percentEncoded(std::string_view path) {
  constexpr char digits[] = "0123456789ABCDEF";
  std::string encoded;
  for (char c : path) {
    if (isPlainPath({&c, 1})) {
      encoded += c;
    } else {
      unsigned char byte = static_cast<unsigned char>(c);
      encoded += {'%', digits[byte >> 4], digits[byte & 15]};
    }
  }
  return encoded;
}

std::string fileUri(std::string_view path) { return "file://" + percentEncoded(path); }

/**
 * The heap for documents of `bytes`, in MiB. A tree in memory takes 4 to 10 times the text, and an answer that is built
 * before it is written as much again and more; 40 times leaves room for both and for the collector. Never less than
 * 256, and never more than three quarters of the machine's memory beyond that.
 */
std::uintmax_t heapMebibytes(std::uintmax_t bytes) {
  constexpr std::uintmax_t mebibyte = 1 << 20;
  constexpr std::uintmax_t least = 256;
  std::uintmax_t memory = static_cast<std::uintmax_t>(sysconf(_SC_PHYS_PAGES)) *
                          static_cast<std::uintmax_t>(sysconf(_SC_PAGESIZE)) / mebibyte;
  return std::max(least, std::min(least + 40 * bytes / mebibyte, memory / 4 * 3));
}

std::string findJava() {
  const char* home = std::getenv("JAVA_HOME");
  std::string java = std::string(home ? home : "") + "/bin/java";
  return home && access(java.c_str(), X_OK) == 0 ? java : findProgram("java");
}

/** A processor in Java. */
class JavaProcessor : public Processor {
 protected:
  JavaProcessor(const std::string& name, std::string jar, const ProcessorOptions& options)
      : Processor(name, options), java_(findJava()), jar_(std::move(jar)) {}

  // The runtime's own XML parser, whatever other parser is installed: it keeps to the list of protocols, so that
  // nothing but local files is ever opened, and without --dtd not even these. Deep documents need a deep stack.
  std::vector<std::string> javaCommand(const Task& task) const {
    return {java_,
            "-Xmx" + std::to_string(heapMebibytes(task.bytes)) + "m",
            "-Xss256m",
            "-Djavax.xml.parsers.SAXParserFactory=com.sun.org.apache.xerces.internal.jaxp.SAXParserFactoryImpl",
            std::string("-Djavax.xml.accessExternalDTD=") + (task.loadsDtd ? "file" : ""),
            "-cp",
            jar_};
  }

 private:
  // Java reads and writes file names in the encoding of the locale.
  Environment environment() const override { return {{"LC_ALL", "C.UTF-8"}}; }

  std::string java_;
  std::string jar_;
};

class Saxon : public JavaProcessor {
 public:
  explicit Saxon(const ProcessorOptions& options) : JavaProcessor("saxon", saxonJar, options) {}

 private:
  std::vector<std::string> command(const Task& task) const override {
    std::vector<std::string> words = javaCommand(task);
    words.insert(words.end(), {"net.sf.saxon.Query", "-q:" + task.query, "-strip:none", "!indent=no"});
    if (!task.loadsDtd) {
      words.push_back("--parserFeature?uri=http%3A//apache.org/xml/features/nonvalidating/load-external-dtd:false");
      words.push_back("--parserFeature?uri=http%3A//xml.org/sax/features/external-parameter-entities:false");
    }
    words.push_back(task.variable.empty() ? "-s:" + fileUri(task.input) : task.variable + "=" + task.input);
    return words;
  }

  // In a collection the ending tells documents from other resources.
  bool reads(const std::string& path, bool inCollection) const override {
    return !findNonUtf8(path) && (!inCollection || path.ends_with(".xml"));
  }

  std::string collectionOf(const std::vector<std::string>& paths) const override {
    std::string catalog = "<collection stable=\"true\">";
    for (const std::string& path : paths) catalog += "<doc href=\"" + fileUri(path) + "\"/>";
    return fileUri(folder().write("catalog.xml", catalog + "</collection>"));
  }
};

class BaseX : public JavaProcessor {
 public:
  explicit BaseX(const ProcessorOptions& options) : JavaProcessor("basex", basexJar, options) {
    fs::create_directory(home());
  }

 private:
  std::vector<std::string> command(const Task& task) const override {
    std::vector<std::string> words = javaCommand(task);
    // BaseX 9.7.2 goes wrong when it puts its text index into a loop ("Item expected, sequence found"): none is made.
    words.insert(words.begin() + 1,
                 {"-Dorg.basex.path=" + home(), "-Dorg.basex.xinclude=false", "-Dorg.basex.textindex=false",
                  std::string("-Dorg.basex.dtd=") + (task.loadsDtd ? "true" : "false")});
    words.insert(words.end(), {"org.basex.BaseX", "-w", "-sindent=no"});
    if (task.variable.empty()) {
      words.push_back("-i" + task.input);
    } else {
      words.insert(words.end(), {"-c" + commandFile(), "-b" + task.variable + "=" + task.input});
    }
    words.push_back(task.query);
    return words;
  }

  bool reads(const std::string& path, bool) const override { return isPlainPath(path); }

  // A database keeps the order in which documents are added, which a folder does not.
  std::string collectionOf(const std::vector<std::string>& paths) const override {
    std::string commands = "SET CHOP false\nCREATE DB collection\n";
    for (const std::string& path : paths) commands += "ADD " + path + "\n";
    folder().write(commandFileName, commands);
    return "collection";
  }

  // It begins with a line about its configuration file, which is new in every run.
  std::string explanation(const std::string& error) const override {
    bool isAboutConfiguration = error.starts_with(home());
    return isAboutConfiguration ? error.substr(std::min(error.size(), error.find('\n') + 1)) : error;
  }

  std::string home() const { return folder().file("basex"); }
  std::string commandFile() const { return folder().file(commandFileName); }

  static constexpr const char* commandFileName = "collection.bxs";
};

/** The words of a command line; quotes of both kinds hold blanks, and nothing else is special. */
std::vector<std::string> splitWords(const std::string& text) {
  std::vector<std::string> words;
  bool isInWord = false;
  char quote = 0;
  for (char c : text) {
    bool isBlank = !quote && (c == ' ' || c == '\t' || c == '\n');
    bool isQuote = quote ? c == quote : c == '"' || c == '\'';
    if (!isBlank && !isInWord) words.emplace_back();
    isInWord = !isBlank;
    if (isQuote) quote = quote ? '\0' : c;
    if (!isBlank && !isQuote) words.back() += c;
  }
  if (quote) throw WrongUsage(std::string("--processor-command: a ") + quote + " is never closed");
  if (words.empty()) throw WrongUsage("--processor-command: the command is empty");
  return words;
}

/** Throws Failure when `answer` begins like a sentence: a message that went to standard output. */
void refuseMessage(std::FILE* answer) {
  int first = std::fgetc(answer);
  std::ungetc(first, answer);
  constexpr std::uintmax_t enough = 200;
  if (!std::isalnum(first)) return;
  std::string text = readText(answer, enough);
  text.erase(text.find_last_not_of('\n') + 1);
  std::replace(text.begin(), text.end(), '\n', ' ');
  throw Failure("its answer is no XML; it begins: " + text);
}

/** The processor that the user gives as a command line. With a collection {input} is a folder that holds it. */
class GivenProcessor : public Processor {
 public:
  GivenProcessor(std::vector<std::string> words, const ProcessorOptions& options)
      : Processor(words[0], options), words_(std::move(words)) {}

 private:
  std::vector<std::string> command(const Task& task) const override {
    std::vector<std::string> words;
    for (const std::string& word : words_) {
      words.push_back(replaced(replaced(word, "{query}", task.query), "{input}", task.input));
    }
    return words;
  }

  bool reads(const std::string&, bool inCollection) const override { return !inCollection; }
  std::string collectionOf(const std::vector<std::string>&) const override { return linkFolder(); }
  bool isToldAboutDtd() const override { return false; }

  std::vector<std::string> words_;
};

bool isInstalled(const char* jar) { return !findJava().empty() && access(jar, R_OK) == 0; }

}  // namespace

Processor::Processor(std::string name, const ProcessorOptions& options)
    : name_(std::move(name)), mayLoadDtd_(options.loadsDtd) {
  fs::create_directory(linkFolder());
}

void Processor::run(const std::string& query, const Source& document, const OutputReader& read) {
  Place input = place(document, false);
  bool loadsDtd = canLoadDtd(document, input);
  if (!loadsDtd) warnOfDtd(document);
  runTask({folder_.write(queryName, query), input.path, "", document.size, loadsDtd}, document.name, read);
}

void Processor::runCollection(const std::string& query, const std::string& variable,
                              const std::vector<Source>& documents, const OutputReader& read) {
  std::vector<std::string> paths;
  std::uintmax_t bytes = 0;
  bool loadsDtd = true;
  for (const Source& document : documents) {
    Place input = place(document, true);
    loadsDtd = canLoadDtd(document, input) && loadsDtd;
    bytes += document.size;
    paths.push_back(input.path);
  }
  if (!loadsDtd) std::for_each(documents.begin(), documents.end(), [&](const Source& one) { warnOfDtd(one); });
  runTask({folder_.write(queryName, query), collectionOf(paths), variable, bytes, loadsDtd},
          documents.size() == 1 ? documents[0].name : "the collection", read);
}

Processor::Place Processor::place(const Source& document, bool inCollection) {
  if (reads(document.path, inCollection)) return {document.path, false};
  std::string digits = std::to_string(++links_);
  std::string link =
      linkFolder() + "/" + std::string(8 - std::min<std::size_t>(8, digits.size()), '0') + digits + ".xml";
  fs::create_symlink(document.path, link);
  return {link, true};
}

/** All or nothing: what is relative is out of reach once the document stands elsewhere, in the folder with the links.
 */
bool Processor::canLoadDtd(const Source& document, const Place& place) const {
  return mayLoadDtd_ &&
         std::all_of(document.prolog.externals.begin(), document.prolog.externals.end(), [&](const ExternalPart& part) {
           return !findLocally(part, document.path).empty() && !(place.isLinked && isRelative(part));
         });
}

void Processor::warnOfDtd(const Source& document) const {
  if (!isToldAboutDtd()) return;
  for (const ExternalPart& part : document.prolog.externals) {
    bool isWithinReach = !mayLoadDtd_ && !findLocally(part, document.path).empty();
    warn(document.name + ": " + part.what + " '" + part.systemId + "' is not read" +
         (isWithinReach ? "; --dtd reads it" : ""));
  }
}

void Processor::runTask(const Task& task, const std::string& documentName, const OutputReader& read) const {
  ProcessEnd end = runProcess(command(task), environment(), read);
  if (end.succeeded) return;
  std::string details = explanation(end.error);
  if (details.find(queryName) != std::string::npos) {
    details += std::string("'xdm query' with the same model and options prints ") + queryName + "\n";
  }
  throw Failure("the XQuery processor " + name_ + " failed on " + documentName + " (" + end.how + ")", details);
}

OutputReader Processor::answerReader(const std::string& expected, const OutputReader& read) const {
  return [processor = name_, expected, read](std::FILE* answer) {
    try {
      refuseMessage(answer);
      read(answer);
    } catch (const Failure& problem) {
      throw Failure("the XQuery processor " + processor + " gave no " + expected, problem.what());
    }
  };
}

std::unique_ptr<Processor> chooseProcessor(const ProcessorOptions& options) {
  if (options.commandTemplate) {
    return std::make_unique<GivenProcessor>(splitWords(*options.commandTemplate), options);
  }
  bool isSaxonInstalled = isInstalled(saxonJar);
  bool isBasexInstalled = isInstalled(basexJar);
  if (options.name != "basex" && isSaxonInstalled) return std::make_unique<Saxon>(options);
  if (options.name != "saxon" && isBasexInstalled) return std::make_unique<BaseX>(options);
  throw Failure(options.name.empty() ? "no XQuery processor was found"
                                     : "the XQuery processor " + options.name + " was not found",
                "install the package default-jre-headless, and libsaxonhe-java (saxon) or basex (basex)");
}

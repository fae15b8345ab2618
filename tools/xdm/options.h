// The command line.
// Tested by tests/tool/xdm_usage_test.cpp.
#ifndef XDM_OPTIONS_H
#define XDM_OPTIONS_H

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

class Output;
struct Options;

/** --column and --group-column. */
struct ColumnChoice {
  std::string xpath;
  std::string name;  // empty: the library makes one
  bool isGroupBy;
};

/** Which model to work on, and what to change in it. */
struct ModelOptions {
  std::string path;  // "-": standard input
  bool hasMapOptions = false;
  std::string table;
  std::string groupBy;
  bool retain = false;
  bool acceptOutput = false;
  bool heading = false;
  std::optional<std::string> row;
  std::vector<ColumnChoice> columns;
  std::vector<std::pair<std::string, std::string>> columnXPaths;  // name, XPath
  bool collection = false;
};

struct ProcessorOptions {
  std::string name;                            // "saxon", "basex" or empty: the first one found
  std::optional<std::string> commandTemplate;  // --processor-command
  bool loadsDtd = false;
};

struct GeneratorOptions {
  bool streamingOption = false;
  bool sequence = false;
  bool absoluteLets = false;
  bool keepWhitespace = false;
  bool groupRows = false;
};

struct Options {
  void (*command)(const Options&, Output&) = nullptr;
  ModelOptions model;
  GeneratorOptions generator;
  ProcessorOptions processor;
  std::string format;
  std::vector<std::string> documents;
  std::string output;  // empty: standard output
  bool quiet = false;
};

/** The definition of the command line, and its reading. */
class CommandLine {
 public:
  CommandLine();
  ~CommandLine();

  /** The options; none when help or the version was asked for and printed. Throws WrongUsage. */
  std::optional<Options> parse(int argc, char** argv);

  /** The usage of the command at hand. */
  std::string usage() const;

 private:
  struct Definition;
  std::unique_ptr<Definition> definition_;
};

#endif

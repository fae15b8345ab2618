#include "options.h"

#include <kvxdm/kvxdm.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <sstream>
#include <string_view>

#include "commands.h"
#include "diagnostics.h"
#include "man.h"
#include "output.h"

namespace {

/** Where the first "=" outside brackets stands. */
std::size_t findNameSign(std::string_view text) {
  int depth = 0;
  for (std::size_t position = 0; position < text.size(); ++position) {
    if (text[position] == '[') ++depth;
    if (text[position] == ']') --depth;
    if (text[position] == '=' && depth == 0) return position;
  }
  return std::string_view::npos;
}

ColumnChoice columnChoice(const std::string& text, bool isGroupBy) {
  std::size_t sign = findNameSign(text);
  if (sign == std::string::npos) return {text, "", isGroupBy};
  return {text.substr(0, sign), text.substr(sign + 1), isGroupBy};
}

std::pair<std::string, std::string> columnXPath(const std::string& text) {
  std::size_t sign = text.find('=');
  if (sign == std::string::npos) throw WrongUsage("--column-xpath: '" + text + "' is not NAME=XPATH");
  return {text.substr(0, sign), text.substr(sign + 1)};
}

void checkStandardInput(const Options& options) {
  auto uses = std::count(options.documents.begin(), options.documents.end(), "-");
  if (uses + (options.model.path == "-") > 1) throw WrongUsage("standard input can be read only once");
}

/** The options of the command line that keep their order among each other; CLI11 gives each option's values apart. */
struct ColumnOptions {
  CLI::Option* plain;
  CLI::Option* grouped;

  std::vector<ColumnChoice> inOrder(const CLI::App& command) const {
    std::vector<ColumnChoice> choices;
    std::size_t plainSeen = 0;
    std::size_t groupedSeen = 0;
    for (const CLI::Option* option : command.parse_order()) {
      if (option == plain) choices.push_back(columnChoice(plain->results()[plainSeen++], false));
      if (option == grouped) choices.push_back(columnChoice(grouped->results()[groupedSeen++], true));
    }
    return choices;
  }
};

/** Whether a command takes the word behind the option `word` for its value. */
bool wantsValue(const CLI::App& app, const std::string& word) {
  const CLI::Option* option = word.starts_with('-') ? app.get_option_no_throw(word) : nullptr;
  if (option) return option->get_items_expected_min() > 0;
  std::vector<const CLI::App*> commands = app.get_subcommands({});
  return std::any_of(commands.begin(), commands.end(), [&](auto* command) { return wantsValue(*command, word); });
}

/** The words for CLI11, last one first. It takes a file's name in brackets for a list; with "./" it is a path. */
std::vector<std::string> wordsForParser(const CLI::App& app, int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  for (std::size_t i = 0; i < words.size(); ++i) {
    bool isInBrackets = words[i].starts_with('[') && words[i].ends_with(']');
    if (isInBrackets && (i == 0 || !wantsValue(app, words[i - 1]))) words[i].insert(0, "./");
  }
  std::reverse(words.begin(), words.end());
  return words;
}

bool looksLikeOption(const std::string& word) { return word.starts_with('-') && word != "--"; }

/** What to say of the first word that looks like an option and is none; CLI11 would name a missing file instead. */
std::optional<std::string> unknownOption(const std::vector<std::string>& words) {
  auto found = std::find_if(words.begin(), words.end(), looksLikeOption);
  if (found == words.end()) return std::nullopt;
  return "The following argument was not expected: " + *found;
}

/** What to say when a word stands where `app` has commands and is none of them. */
std::optional<std::string> unknownCommand(const CLI::App& app, const std::vector<std::string>& words) {
  auto found = std::find_if_not(words.begin(), words.end(), looksLikeOption);
  std::vector<const CLI::App*> commands = app.get_subcommands({});
  if (found == words.end() || commands.empty()) return std::nullopt;
  std::string names;
  for (const CLI::App* command : commands) names += (names.empty() ? "" : ", ") + command->get_name();
  return "there is no command '" + *found + "'; the commands are " + names;
}

std::string findEmptyName(const std::string& name) { return name.empty() ? "the file has no name" : ""; }

CLI::Option* addRepeatable(CLI::App* command, const std::string& name, const std::string& help,
                           const std::string& value) {
  return command->add_option(name, help)
      ->type_name(value)
      ->expected(1)
      ->allow_extra_args(false)
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

}  // namespace

struct CommandLine::Definition {
  CLI::App app{"Looks at a model of an XML vocabulary, prints its queries and runs them.", "xdm"};
  Options options;
  /** What is read from a command's options once all are known. */
  std::map<const CLI::App*, std::vector<std::function<void()>>> afterwards;

  Definition();

  const CLI::App* chosen() const;
  /** Prints what was asked for instead of a command: help, the version or the manual page. */
  void print(const CLI::Success& asked) const;
  std::string explain(const CLI::ParseError& wrong) const;
  CLI::App* addCommand(CLI::App* parent, const char* name, const char* help, void (*run)(const Options&, Output&));
  CLI::App* addModelCommand(CLI::App* parent, const char* name, const char* help, void (*run)(const Options&, Output&));
  void addMapOptions(CLI::App* command);
  void addSelectionOptions(CLI::App* command);
  void addPage(CLI::App* command);
  void addFormat(CLI::App* command, const std::vector<std::string>& formats);
  void addToRowsOptions(CLI::App* command);
  void addStreaming(CLI::App* command);
  void addGroupRows(CLI::App* command);
  void addProcessorOptions(CLI::App* command);
  void addQueryCommands();
  void addRows();
  void addDocument();
};

CommandLine::Definition::Definition() {
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
  app.set_version_flag("--version", kvx_build_info, "Print the version and exit");
  // What the build makes xdm.1 with; no concern of a user's, so the help keeps quiet about it.
  app.add_flag_callback("--man-page", [this] { throw CLI::CallForVersion(manPage(app), 0); })->group("");
  app.require_subcommand(1);
  CLI::App* tables = addCommand(&app, "tables", "Print the names of the tables of an XMLMap", &printTables);
  tables->add_option("MAP", options.model.path, "an XMLMap file")->required();
  addPage(addModelCommand(&app, "show", "Print the tree of a model", &showModel));
  CLI::App* columns = addModelCommand(&app, "columns", "Print the selected columns of a model", &printColumns);
  addFormat(columns, {"table", "csv", "json"});
  addQueryCommands();
  addModelCommand(&app, "save", "Print a model as an XDM document", &saveModel);
  addRows();
  addDocument();
}

void CommandLine::Definition::addQueryCommands() {
  CLI::App* query = app.add_subcommand("query", "Print a query of a model");
  query->require_subcommand(1);
  CLI::App* toRows = addModelCommand(query, "to-rows", "Print the XML-to-rows query", &printToRowsQuery);
  addStreaming(toRows);
  addToRowsOptions(toRows);
  CLI::App* fromRows = addModelCommand(query, "from-rows", "Print the rows-to-XML query", &printFromRowsQuery);
  addStreaming(fromRows);
  addGroupRows(fromRows);
}

void CommandLine::Definition::addRows() {
  CLI::App* rows = addModelCommand(&app, "rows", "Print the rows of documents", &printRows);
  rows->add_option("DOCUMENT", options.documents,
                   "XML documents, '-' for standard input; with --collection also folders")
      ->required();
  addFormat(rows, {"csv", "json", "xml"});
  addToRowsOptions(rows);
  addProcessorOptions(rows);
}

void CommandLine::Definition::addDocument() {
  CLI::App* document = addModelCommand(&app, "document", "Print the document that rows make", &printDocument);
  document->add_option("ROWS", options.documents, "rows as CSV or as XML (table/row), '-' for standard input")
      ->required()
      ->expected(1)
      ->multi_option_policy(CLI::MultiOptionPolicy::Throw);
  addGroupRows(document);
  addProcessorOptions(document);
}

CLI::App* CommandLine::Definition::addCommand(CLI::App* parent, const char* name, const char* help,
                                              void (*run)(const Options&, Output&)) {
  CLI::App* command = parent->add_subcommand(name, help);
  command->add_option("-o,--output", options.output, "Write to FILE, whole or not at all; '-' is standard output")
      ->type_name("FILE")
      ->check(findEmptyName);
  command->add_flag("-q,--quiet", options.quiet, "Print no warnings and show no progress");
  afterwards[command].push_back([this, run] {
    options.command = run;
    if (options.output == "-") options.output.clear();
  });
  return command;
}

CLI::App* CommandLine::Definition::addModelCommand(CLI::App* parent, const char* name, const char* help,
                                                   void (*run)(const Options&, Output&)) {
  CLI::App* command = addCommand(parent, name, help, run);
  command
      ->add_option("MODEL", options.model.path,
                   "an XMLMap or an XDM document; '-' for an XDM document on standard input")
      ->required();
  addMapOptions(command);
  addSelectionOptions(command);
  return command;
}

void CommandLine::Definition::addMapOptions(CLI::App* command) {
  ModelOptions& model = options.model;
  const std::string group = "Options for an XMLMap";
  const CLI::Option* all[] = {
      command->add_option("--table", model.table, "The table to import; the first one when absent")
          ->type_name("NAME")
          ->group(group),
      command->add_option("--group-by", model.groupBy, "Group by columns, for instance \"a=dept b=team\"")
          ->type_name("TEXT")
          ->group(group),
      command->add_flag("--retain", model.retain, "Group by the columns with retain=\"yes\"")->group(group),
      command->add_flag("--accept-output", model.acceptOutput, "Accept the OUTPUT whatever its TABLEREF says")
          ->group(group),
      command->add_flag("--heading", model.heading, "Make the attributes of the HEADING attributes of the root")
          ->group(group)};
  std::vector<const CLI::Option*> given(std::begin(all), std::end(all));
  afterwards[command].push_back([&model, given] {
    model.hasMapOptions = std::any_of(given.begin(), given.end(), [](auto* option) { return option->count() > 0; });
  });
}

void CommandLine::Definition::addSelectionOptions(CLI::App* command) {
  ModelOptions& model = options.model;
  command->add_option("--row", model.row, "The element with this XPath decides the row")->type_name("XPATH");
  ColumnOptions columns = {
      addRepeatable(command, "--column", "Select the node with this XPath as a column", "XPATH[=NAME]"),
      addRepeatable(command, "--group-column", "Select it as a column to group by", "XPATH[=NAME]")};
  CLI::Option* xpaths = addRepeatable(command, "--column-xpath", "Give the column NAME this XPath", "NAME=XPATH");
  command->add_flag("--collection", model.collection, "Read a collection that is named by a variable");
  afterwards[command].push_back([command, columns, xpaths, &model] {
    model.columns = columns.inOrder(*command);
    for (const std::string& text : xpaths->results()) model.columnXPaths.push_back(columnXPath(text));
  });
}

void CommandLine::Definition::addPage(CLI::App* command) {
  CLI::Option* page = command->add_option("--html", options.output, "Write a page for a browser to FILE instead")
                          ->type_name("FILE")
                          ->check(findEmptyName)
                          ->excludes("--output");
  afterwards[command].push_back([this, page] {
    if (page->count() > 0) options.command = &showPage;
  });
}

void CommandLine::Definition::addFormat(CLI::App* command, const std::vector<std::string>& formats) {
  command->add_option("--format", options.format, "How to print: the first one when absent")
      ->check(CLI::IsMember(formats));
  afterwards[command].push_back([this, first = formats.front()] {
    if (options.format.empty()) options.format = first;
  });
}

void CommandLine::Definition::addToRowsOptions(CLI::App* command) {
  GeneratorOptions& generator = options.generator;
  command->add_flag("--sequence", generator.sequence, "A column may meet several elements in a row");
  command->add_flag("--absolute-lets", generator.absoluteLets, "Reach columns outside the row by their absolute path");
  command->add_flag("--keep-whitespace", generator.keepWhitespace, "Keep white space of element text as it is");
}

void CommandLine::Definition::addStreaming(CLI::App* command) {
  command->add_flag("--streaming-option", options.generator.streamingOption,
                    "Declare that the processor shall not stream");
}

void CommandLine::Definition::addGroupRows(CLI::App* command) {
  command->add_flag("--group-rows", options.generator.groupRows, "Group the rows by the columns with a group level");
}

void CommandLine::Definition::addProcessorOptions(CLI::App* command) {
  ProcessorOptions& processor = options.processor;
  CLI::Option* name = command->add_option("--processor", processor.name, "The XQuery processor; the first one found")
                          ->check(CLI::IsMember({"saxon", "basex"}));
  command
      ->add_option("--processor-command", processor.commandTemplate,
                   "The command line of another XQuery processor, with {query} and {input}")
      ->type_name("TEXT")
      ->excludes(name);
  command->add_flag("--dtd", processor.loadsDtd, "Load external DTDs and entities that lie on this machine");
}

const CLI::App* CommandLine::Definition::chosen() const {
  const CLI::App* command = &app;
  while (!command->get_subcommands().empty()) command = command->get_subcommands().front();
  return command;
}

void CommandLine::Definition::print(const CLI::Success& asked) const {
  std::ostringstream text;
  app.exit(asked, text, text);
  Output output("");
  output.write(text.str());
  output.finish();
}

std::string CommandLine::Definition::explain(const CLI::ParseError& wrong) const {
  std::vector<std::string> words = app.remaining(true);
  if (std::optional<std::string> text = unknownOption(words)) return *text;
  return unknownCommand(*chosen(), words).value_or(wrong.what());
}

CommandLine::CommandLine() : definition_(std::make_unique<Definition>()) {}

CommandLine::~CommandLine() = default;

std::optional<Options> CommandLine::parse(int argc, char** argv) {
  try {
    definition_->app.parse(wordsForParser(definition_->app, argc, argv));
    for (const auto& step : definition_->afterwards[definition_->chosen()]) step();
    checkStandardInput(definition_->options);
    return definition_->options;
  } catch (const CLI::Success& asked) {
    definition_->print(asked);
    return std::nullopt;
  } catch (const CLI::ParseError& wrong) {
    throw WrongUsage(definition_->explain(wrong));
  }
}

std::string CommandLine::usage() const { return definition_->app.help(); }

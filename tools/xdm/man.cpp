#include "man.h"

#include <kvxdm/kvxdm.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

constexpr std::string_view after = R"(.SH EXIT STATUS
.TP
.B 0
success
.TP
.B 1
failure; nothing is printed on standard output, and the first line on standard error begins with "xdm: error: "
.TP
.B 2
wrong usage
.SH ENVIRONMENT
.TP
.B JAVA_HOME
the Java runtime for the XQuery processors; without it, java is looked for in
.B PATH
.TP
.B KVX_LOG
a level: events of the library of that level and above go to standard error
.TP
.B KVX_OPTIONS
options of the library: Bench gives the variable of collections a fixed name
.TP
.B NO_COLOR
when set, no progress is shown on a terminal
.TP
.B TMPDIR
the folder for temporary files instead of /tmp
.SH EXAMPLES
The rows of a document as CSV:
.PP
.nf
.RS
xdm rows library.xdm library.xml \-\-column /library/shelf/book/title
.RE
.fi
.PP
The query that makes them:
.PP
.nf
.RS
xdm query to\-rows library.xdm \-\-column /library/shelf/book/title
.RE
.fi
)";

/** `text` as roff shows it unchanged; a line must not begin with what roff takes for a request. */
std::string plain(std::string_view text) {
  std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else {
      if (c == '-') escaped += '\\';
      escaped += c;
    }
  }
  return escaped;
}

std::string bold(std::string_view text) { return "\\fB" + plain(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + plain(text) + "\\fR"; }

bool isShown(const CLI::Option* option) { return !option->get_group().empty(); }

std::vector<const CLI::Option*> positionalsOf(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return isShown(option) && option->get_positional(); });
}

std::vector<const CLI::Option*> optionsOf(const CLI::App& command, const std::string& group) {
  return command.get_options(
      [&](const CLI::Option* option) { return option->nonpositional() && option->get_group() == group; });
}

std::vector<std::string> groupsOf(const CLI::App& command) {
  std::vector<std::string> groups = command.get_groups();
  groups.erase(std::remove(groups.begin(), groups.end(), ""), groups.end());
  return groups;
}

std::string namesOf(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += (names.empty() ? "" : ", ") + bold("-" + name);
  for (const std::string& name : option.get_lnames()) names += (names.empty() ? "" : ", ") + bold("--" + name);
  return names;
}

// The names of values that may be given follow the kind of text, "TEXT:{csv,json,xml}"; the kind says nothing new.
std::string valueOf(const CLI::Option& option) {
  std::string value = option.get_type_name();
  return value.starts_with("TEXT:") ? value.substr(5) : value;
}

std::string entry(const std::string& head, const std::string& text) {
  return ".TP\n" + head + "\n" + plain(text) + "\n";
}

std::string optionEntry(const CLI::Option& option) {
  std::string value = option.get_items_expected_max() > 0 ? " " + italic(valueOf(option)) : "";
  return entry(namesOf(option) + value, option.get_description());
}

std::string synopsisOf(const CLI::App& command, const std::string& name) {
  std::string line = ".PP\n" + bold(name) + " [" + italic("OPTION") + "]...";
  for (const CLI::Option* positional : positionalsOf(command)) {
    line += " " + italic(positional->get_single_name()) + (positional->get_expected_max() > 1 ? "..." : "");
  }
  return line + "\n";
}

std::string optionEntries(const CLI::App& command) {
  std::string text;
  for (const std::string& group : groupsOf(command)) {
    if (group != "Options") text += ".PP\n" + plain(group) + ":\n";
    for (const CLI::Option* option : optionsOf(command, group)) text += optionEntry(*option);
  }
  return text;
}

std::string section(const CLI::App& command, const std::string& name) {
  std::string text = ".SS " + plain(name) + "\n" + plain(command.get_description()) + ".\n";
  for (const CLI::Option* positional : positionalsOf(command)) {
    text += entry(italic(positional->get_single_name()), positional->get_description());
  }
  return text + optionEntries(command);
}

struct Command {
  const CLI::App* app;
  std::string name;  // "xdm query to-rows"
};

/** The commands that do something, in the order of the help. */
std::vector<Command> commandsOf(const CLI::App& app, const std::string& name) {
  std::vector<Command> commands;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    std::string own = name + " " + command->get_name();
    std::vector<Command> inner = commandsOf(*command, own);
    if (inner.empty()) inner.push_back({command, own});
    commands.insert(commands.end(), inner.begin(), inner.end());
  }
  return commands;
}

}  // namespace

std::string manPage(const CLI::App& app) {
  std::vector<Command> commands = commandsOf(app, app.get_name());
  std::string page = ".TH XDM 1 \"\" \"xdm " + std::string(kvx_build_version) + "\" \"User Commands\"\n";
  page += ".SH NAME\nxdm \\- rows of a table from XML documents, and documents from rows\n.SH SYNOPSIS\n";
  for (const Command& command : commands) page += synopsisOf(*command.app, command.name);
  page += ".SH DESCRIPTION\n" + plain(app.get_description()) + "\n.SH OPTIONS\n" + optionEntries(app);
  page += ".SH COMMANDS\n";
  for (const Command& command : commands) page += section(*command.app, command.name);
  return page.append(after);
}

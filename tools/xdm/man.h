// The manual page, from the definition of the command line that also makes the help.
// Tested by tests/tool/xdm_man_test.cpp.
#ifndef XDM_MAN_H
#define XDM_MAN_H

#include <string>

namespace CLI {
class App;
}

/** The text of xdm.1. */
std::string manPage(const CLI::App& app);

#endif

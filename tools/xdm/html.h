// A page that shows a model: `xdm show --html`.
// Tested by tests/tool/xdm_page_test.cpp and, in a browser, by tests/browser.
#ifndef XDM_HTML_H
#define XDM_HTML_H

#include <kvxdm/kvxdm.h>

#include <string>

/** The whole page, which needs nothing outside itself: the tree, the columns and both queries of `main`. A query that
 * the library refuses is replaced by the library's message. */
std::string htmlPage(XDMMain& main, const std::string& title);

#endif

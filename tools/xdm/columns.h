// The selected columns with all their properties.
// Tested by tests/tool/xdm_columns_test.cpp.
#ifndef XDM_COLUMNS_H
#define XDM_COLUMNS_H

#include <kvxdm/kvxdm.h>

#include <nlohmann/json.hpp>

/** One array of objects, as `xdm columns --format json` prints it. */
nlohmann::ordered_json columnsJson(XDMMain& main);

#endif

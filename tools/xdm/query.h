// The queries of a model, with the generator's arguments as the options give them.
#ifndef XDM_QUERY_H
#define XDM_QUERY_H

#include <kvxdm/kvxdm.h>

#include <string>

#include "options.h"

/** Exactly what the library returns. Throw Failure. */
std::string toRowsQuery(XDMMain& main, const GeneratorOptions& options);
std::string fromRowsQuery(XDMMain& main, const GeneratorOptions& options);

#endif

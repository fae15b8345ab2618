// The functions that a rows-to-XML query can call.
// Tested by tests/unit/kvxdmxqy_library_test.cpp.
#ifndef KVXDM_SRC_KVXDMXQY_LIBRARY_H
#define KVXDM_SRC_KVXDMXQY_LIBRARY_H

#include "kvxdmxqy_text.h"

/**
 * The request value of each function, by its name and number of arguments: a bit of its own and, where the function
 * calls local:gt, the bit of local:gt.
 */
namespace request {
constexpr unsigned gt = 0x8000;
constexpr unsigned e2e_na = 0x4000;
constexpr unsigned e2e_2 = 0x2000 | gt;
constexpr unsigned e2e_3 = 0x1000 | gt;
constexpr unsigned e2ec_nac = 0x0800;
constexpr unsigned e2ec_2 = 0x0400;
constexpr unsigned e2ec_4 = 0x0200 | gt;
constexpr unsigned e2ec_3 = 0x0100 | gt;
constexpr unsigned et2ec_4 = 0x0080;
constexpr unsigned et2ec_3 = 0x0040;
constexpr unsigned ma = 0x0020 | gt;
constexpr unsigned msa = 0x0010;
}  // namespace request

/** Declares the functions whose request values are in `requested`, in the order of the library. */
void declareFunctions(short requested, QueryText& query);

#endif

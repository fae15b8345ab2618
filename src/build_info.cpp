// Exported build information. The build reads the version from here.
#include <kvxdm/kvxdm.h>

extern "C" {
const int kvx_build_number = 28;
const char* const kvx_build_info = "XML Data Model version 1.6 (build 28)";
const char* const kvx_build_version = "1.6";
}

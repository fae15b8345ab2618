# Warnings, sanitizers and hardening, as one interface target that everything of this project links.
add_library(kvxdm_options INTERFACE)
target_compile_options(kvxdm_options INTERFACE -Wall -Wextra -Wpedantic)
if(KVXDM_WERROR)
  target_compile_options(kvxdm_options INTERFACE -Werror)
endif()

if(KVXDM_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL Clang)
    message(FATAL_ERROR "KVXDM_BUILD_FUZZERS needs Clang")
  endif()
  target_compile_options(kvxdm_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

if(KVXDM_SANITIZE)
  target_compile_options(kvxdm_options INTERFACE -fsanitize=${KVXDM_SANITIZE} -fno-sanitize-recover=all
                                                 -fno-omit-frame-pointer)
  target_link_options(kvxdm_options INTERFACE -fsanitize=${KVXDM_SANITIZE})
else()
  # -z defs: a shared object names every library that it needs. Sanitizers leave their own symbols open.
  target_link_options(kvxdm_options INTERFACE
                      $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-Wl,-z,defs> -Wl,-z,relro,-z,now)
  target_compile_options(kvxdm_options INTERFACE -fstack-protector-strong
                                                 $<$<CONFIG:Release,RelWithDebInfo>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>)
endif()

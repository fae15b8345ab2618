# kvxdm_add_library(name SOURCES ... [PUBLIC_HEADERS ...] [INCLUDES dir] [LINKS ...] [PRIVATE_LINKS ...])
#
# Makes the shared object `name`, which exports what packaging/name.map says, and its static twin `name_static`, which
# the tests use to reach what is hidden. Both consist of the same objects. LINKS names other libraries made by this
# function; the twin links their twins.
function(kvxdm_add_library name)
  cmake_parse_arguments(arg "" "INCLUDES" "SOURCES;PUBLIC_HEADERS;LINKS;PRIVATE_LINKS" ${ARGN})
  set(map ${PROJECT_SOURCE_DIR}/packaging/${name}.map)

  add_library(${name}_objects OBJECT ${arg_SOURCES})
  target_include_directories(${name}_objects PUBLIC ${arg_INCLUDES})
  target_link_libraries(${name}_objects PUBLIC ${arg_LINKS} PRIVATE kvxdm_options ${arg_PRIVATE_LINKS})
  # A library calls its own exported functions directly; no host replaces them.
  target_compile_options(${name}_objects PRIVATE -fno-semantic-interposition)

  add_library(${name} SHARED)
  add_library(kvxdm::${name} ALIAS ${name})
  target_link_libraries(${name} PUBLIC ${arg_LINKS} PRIVATE ${name}_objects kvxdm_options ${arg_PRIVATE_LINKS})
  target_include_directories(${name} INTERFACE $<BUILD_INTERFACE:${arg_INCLUDES}>
                                               $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_link_options(${name} PRIVATE -Wl,--version-script=${map})
  set_target_properties(${name} PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
                                           LINK_DEPENDS ${map} INSTALL_RPATH $ORIGIN)

  set(twins ${arg_LINKS})
  list(TRANSFORM twins APPEND _static)
  add_library(${name}_static STATIC EXCLUDE_FROM_ALL)
  target_link_libraries(${name}_static PRIVATE ${name}_objects PUBLIC ${twins} ${arg_PRIVATE_LINKS})
  target_include_directories(${name}_static PUBLIC ${arg_INCLUDES})

  install(TARGETS ${name} EXPORT kvxdm LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
                                               NAMELINK_COMPONENT dev)
  install(FILES ${arg_PUBLIC_HEADERS} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${name} COMPONENT dev)
endfunction()

# Debian packages, made by cpack from the components that are installed: libkvxdm1, libkvxdm-dev and xdm-tools.
# scripts/check-packages configures for them, makes them and tries them.
find_program(KVXDM_GZIP gzip REQUIRED)
set(KVXDM_PACKAGE_RELEASE 1)
set(KVXDM_PACKAGE_MAINTAINER "XDM developers <developers@kvxdm.example>")

configure_file(packaging/debian/changelog.in ${PROJECT_BINARY_DIR}/debian/changelog @ONLY)
execute_process(COMMAND ${KVXDM_GZIP} -9nc ${PROJECT_BINARY_DIR}/debian/changelog
                OUTPUT_FILE ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz COMMAND_ERROR_IS_FATAL ANY)

# kvxdm_add_package(component PACKAGE name SECTION section SUMMARY text DESCRIPTION text [DEPENDS text]
#                   [RECOMMENDS text])
#
# What a package needs of the system is found out from its programs; DEPENDS adds to that.
function(kvxdm_add_package component)
  cmake_parse_arguments(arg "" "PACKAGE;SECTION;SUMMARY;DEPENDS;RECOMMENDS;DESCRIPTION" "" ${ARGN})
  string(TOUPPER CPACK_DEBIAN_${component} prefix)
  set(${prefix}_PACKAGE_NAME ${arg_PACKAGE} PARENT_SCOPE)
  set(${prefix}_FILE_NAME DEB-DEFAULT PARENT_SCOPE)
  set(${prefix}_PACKAGE_SECTION ${arg_SECTION} PARENT_SCOPE)
  set(${prefix}_PACKAGE_DEPENDS "${arg_DEPENDS}" PARENT_SCOPE)
  set(${prefix}_PACKAGE_RECOMMENDS "${arg_RECOMMENDS}" PARENT_SCOPE)
  set(${prefix}_DESCRIPTION "${arg_SUMMARY}\n${arg_DESCRIPTION}" PARENT_SCOPE)
  install(FILES packaging/debian/copyright ${PROJECT_BINARY_DIR}/debian/changelog.Debian.gz
          DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${arg_PACKAGE} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(package_version ${PROJECT_VERSION}-${KVXDM_PACKAGE_RELEASE})
kvxdm_add_package(runtime
  PACKAGE libkvxdm${PROJECT_VERSION_MAJOR}
  SECTION libs
  SUMMARY "library that writes XQuery between XML documents and tables"
  DESCRIPTION
"The XML Data Model library has a model of an XML vocabulary in which an
application selects columns and the element that makes a row. It writes the
XQuery that turns documents into a table of rows, and the one that turns rows
back into documents.")
kvxdm_add_package(dev
  PACKAGE libkvxdm-dev
  SECTION libdevel
  SUMMARY "library that writes XQuery between XML and tables - development files"
  DEPENDS "libkvxdm${PROJECT_VERSION_MAJOR} (= ${package_version})"
  DESCRIPTION
"The XML Data Model library writes XQuery that turns XML documents into tables
of rows, and rows back into documents.
.
This package has its headers, its CMake package and its pkg-config file.")
kvxdm_add_package(tools
  PACKAGE xdm-tools
  SECTION text
  SUMMARY "rows of a table from XML documents, and documents from rows"
  DEPENDS "libkvxdm${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})"
  RECOMMENDS "libsaxonhe-java | basex, default-jre-headless | java8-runtime-headless"
  DESCRIPTION
"The tool xdm takes rows out of XML documents as CSV, JSON or XML and makes
documents from rows. It shows models of XML vocabularies and prints the XQuery
that it writes. An XQuery processor, such as Saxon-HE or BaseX, runs it.")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kvxdm)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_COMPONENTS_ALL runtime dev tools)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${KVXDM_PACKAGE_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${KVXDM_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src ${PROJECT_BINARY_DIR}/base/kvxbase
                                                ${PROJECT_BINARY_DIR}/base/kvxdom ${PROJECT_BINARY_DIR}/base/kvxlog)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
include(CPack)

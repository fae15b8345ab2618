# What else an installed library needs: the CMake package `kvxdm` with targets kvxdm::*, and kvxdm.pc.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/kvxdm)
install(EXPORT kvxdm FILE kvxdmTargets.cmake NAMESPACE kvxdm:: DESTINATION ${package_dir}
        COMPONENT dev)
configure_package_config_file(packaging/kvxdmConfig.cmake.in ${PROJECT_BINARY_DIR}/kvxdmConfig.cmake
                              INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/kvxdmConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/kvxdmConfig.cmake ${PROJECT_BINARY_DIR}/kvxdmConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT dev)

# kvxdm.pc finds its prefix from where it lies, so an installation can be moved.
file(RELATIVE_PATH KVXDM_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(packaging/kvxdm.pc.in ${PROJECT_BINARY_DIR}/kvxdm.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kvxdm.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

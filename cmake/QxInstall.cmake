# Install rules: libraries, headers, the tool, run-time data, CMake package and pkg-config file.
include(CMakePackageConfigHelpers)

set(QXI18N_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qxi18n)

install(TARGETS qxi18n qxfoundation_filesystem qxtessera
  EXPORT qxi18nTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(EXPORT qxi18nTargets
  NAMESPACE qxi18n::
  DESTINATION ${QXI18N_CMAKE_DIR})

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qxi18nConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qxi18nConfig.cmake
  INSTALL_DESTINATION ${QXI18N_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qxi18nConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/qxi18nConfig.cmake
  ${PROJECT_BINARY_DIR}/qxi18nConfigVersion.cmake
  DESTINATION ${QXI18N_CMAKE_DIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/qxi18n.pc.in ${PROJECT_BINARY_DIR}/qxi18n.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qxi18n.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

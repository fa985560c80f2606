# SPDX-License-Identifier: MIT
# What a program is built with: the library, its headers, find_package and pkg-config.
include(CMakePackageConfigHelpers)
set(kovasmgr_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KOVASMgr")

install(TARGETS KOVASMgr EXPORT KOVASMgrTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT Runtime NAMELINK_COMPONENT Development)

install(DIRECTORY include/ bindings/cpp/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovasmgr COMPONENT Development
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
# What KOVASMgrWriteLog.h needs.
install(FILES common/jmutex.h common/thread_annotations.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kovasmgr/common COMPONENT Development)

# Both find everything relative to themselves, so that the tree may be moved.
install(EXPORT KOVASMgrTargets NAMESPACE KOVASMgr::
  DESTINATION ${kovasmgr_package_dir} COMPONENT Development)
set(kovasmgr_adapter_dir "${CMAKE_INSTALL_LIBDIR}/kovasmgr")
configure_package_config_file(cmake/KOVASMgrConfig.cmake.in KOVASMgrConfig.cmake
  INSTALL_DESTINATION ${kovasmgr_package_dir} PATH_VARS kovasmgr_adapter_dir)
write_basic_package_version_file(KOVASMgrConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/KOVASMgrConfig.cmake" "${PROJECT_BINARY_DIR}/KOVASMgrConfigVersion.cmake"
  cmake/KOVASMgrAdapter.cmake
  DESTINATION ${kovasmgr_package_dir} COMPONENT Development)

cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
  BASE_DIRECTORY "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" OUTPUT_VARIABLE kovasmgr_prefix_from_pc)
set(kovasmgr_pc_libdir "\${prefix}")
cmake_path(APPEND kovasmgr_pc_libdir "${CMAKE_INSTALL_LIBDIR}")
set(kovasmgr_pc_includedir "\${prefix}")
cmake_path(APPEND kovasmgr_pc_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
configure_file(cmake/kovasmgr.pc.in kovasmgr.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/kovasmgr.pc"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT Development)

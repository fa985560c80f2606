# SPDX-License-Identifier: MIT
# kovasmgr_add_adapter(<target> DIRECTORY <name> SOURCES <file>... [LIBRARIES <library>...])
#
# Builds an adapter: a module called libOSAdapt.so, alone in <build>/adapters/<name>, linked to
# libKOVASMgr for its log lines. Installed beside the package: find_package(KOVASMgr) gives it too.
function(kovasmgr_add_adapter target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DIRECTORY" "SOURCES;LIBRARIES")
  add_library(${target} MODULE ${arg_SOURCES})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME OSAdapt
    LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/adapters/${arg_DIRECTORY}")
  target_link_libraries(${target} PRIVATE KOVASMgr::KOVASMgr ${arg_LIBRARIES})
  # Unique symbols would keep the adapter from ever being unloaded.
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  if(TARGET kovasmgr_build_settings)
    target_link_libraries(${target}
      PRIVATE kovasmgr_build_settings kovasmgr_link_time_objects kovasmgr_link_time)
  endif()
  if(NOT APPLE)
    # Archives linked in keep their symbols to themselves. By the SONAME a host finds the adapter that
    # the manager has loaded: dlopen("libOSAdapt.so", RTLD_NOW | RTLD_NOLOAD).
    target_link_options(${target} PRIVATE
      -Wl,-Bsymbolic-functions -Wl,--exclude-libs,ALL -Wl,-soname,libOSAdapt.so)
  endif()
endfunction()

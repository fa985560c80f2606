# SPDX-License-Identifier: MIT
# Manual pages, from scdoc's text, when scdoc is there.
find_program(KOVASMGR_SCDOC scdoc)
if(NOT KOVASMGR_SCDOC)
  message(STATUS "No manual pages: scdoc is not installed")
  return()
endif()

# kovasmgr_add_manual(<component> <file>.<section>.scd) builds and installs a page.
function(kovasmgr_add_manual component source)
  cmake_path(GET source STEM LAST_ONLY page)
  cmake_path(GET page EXTENSION LAST_ONLY section)
  string(SUBSTRING "${section}" 1 -1 section)
  set(output "${PROJECT_BINARY_DIR}/man/${page}")
  add_custom_command(OUTPUT "${output}"
    COMMAND sh -c "\"$1\" < \"$2\" > \"$3\"" scdoc
      "${KOVASMGR_SCDOC}" "${PROJECT_SOURCE_DIR}/${source}" "${output}"
    DEPENDS "${source}" VERBATIM)
  set_property(GLOBAL APPEND PROPERTY KOVASMGR_MANUAL_PAGES "${output}")
  install(FILES "${output}"
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()

file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/man")
kovasmgr_add_manual(Development docs/man/kovasmgr.3.scd)
if(TARGET kovasmgr_virtual)
  kovasmgr_add_manual(Tools docs/man/kovasmgr-virtual.1.scd)
endif()
if(TARGET kovasctl AND EXISTS "${PROJECT_SOURCE_DIR}/tools/kovasctl/kovasctl.1.scd")
  kovasmgr_add_manual(Tools tools/kovasctl/kovasctl.1.scd)
endif()
get_property(kovasmgr_pages GLOBAL PROPERTY KOVASMGR_MANUAL_PAGES)
add_custom_target(manual ALL DEPENDS ${kovasmgr_pages})

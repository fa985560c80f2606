# SPDX-License-Identifier: MIT
# What runs: adapters and programs, with their manual pages and completions; those that are built.
set(KOVASMGR_ZSH_COMPLETION_DIR "${CMAKE_INSTALL_DATADIR}/zsh/site-functions" CACHE STRING
    "Where zsh looks for completions, relative to the prefix")

# Each adapter alone in its directory; one level up, where the library looks, the platform's own.
foreach(name IN ITEMS linux spy virtual)
  if(TARGET adapter_${name})
    install(TARGETS adapter_${name}
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/kovasmgr/${name} COMPONENT Runtime)
  endif()
endforeach()
if(TARGET adapter_linux)
  file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/default_adapter")
  file(CREATE_LINK linux/libOSAdapt.so
    "${PROJECT_BINARY_DIR}/default_adapter/libOSAdapt.so" SYMBOLIC)
  install(FILES "${PROJECT_BINARY_DIR}/default_adapter/libOSAdapt.so"
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/kovasmgr COMPONENT Runtime)
endif()

# In a prefix of its own a program finds the library by its place beside it; in /usr the loader
# knows. Adapters need no such path: the library that they are linked to has loaded them.
if(TARGET kovasctl)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR
    BASE_DIRECTORY "${CMAKE_INSTALL_FULL_BINDIR}" OUTPUT_VARIABLE kovasmgr_lib_from_bin)
  if(NOT APPLE AND NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_target_properties(kovasctl PROPERTIES INSTALL_RPATH "$ORIGIN/${kovasmgr_lib_from_bin}")
  endif()
endif()
foreach(program IN ITEMS kovasctl kovasmgr_virtual)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT Tools)
  endif()
endforeach()

if(TARGET kovasctl)
  set(kovasmgr_completions "${PROJECT_SOURCE_DIR}/tools/kovasctl/completions")
  install(FILES "${kovasmgr_completions}/kovasctl.bash" RENAME kovasctl
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT Tools OPTIONAL)
  install(FILES "${kovasmgr_completions}/_kovasctl"
    DESTINATION ${KOVASMGR_ZSH_COMPLETION_DIR} COMPONENT Tools OPTIONAL)
endif()
if(TARGET kovasctl AND TARGET adapter_virtual)
  # The ready scenarios; what else is there are samples.
  install(DIRECTORY adapters/virtual/scenarios/
    DESTINATION ${CMAKE_INSTALL_DATADIR}/kovasmgr/scenarios COMPONENT Tools
    FILES_MATCHING PATTERN "*.toml" PATTERN builtin.toml EXCLUDE PATTERN demo.toml EXCLUDE)
endif()
install(FILES packaging/udev/70-kovasmgr.rules
  DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT Tools)

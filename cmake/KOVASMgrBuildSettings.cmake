# SPDX-License-Identifier: MIT
# kovasmgr_build_settings: warnings and sanitizers for everything built here. Link it PRIVATE, so that
# nothing of it reaches a host.
add_library(kovasmgr_build_settings INTERFACE)
target_compile_options(kovasmgr_build_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${KOVASMGR_WERROR}>:-Werror>
  # Unique symbols would keep the library from ever being unloaded.
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>
  $<$<COMPILE_LANG_AND_ID:CXX,Clang,AppleClang>:-Wthread-safety>)
if(KOVASMGR_SANITIZE)
  # -fno-sanitize=function: the adapter calls an int function through a void pointer type; the
  # interface has it so, and the calling convention allows it.
  target_compile_options(kovasmgr_build_settings INTERFACE
    -fsanitize=${KOVASMGR_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all
    $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
  target_link_options(kovasmgr_build_settings INTERFACE -fsanitize=${KOVASMGR_SANITIZE})
endif()

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

# kovasmgr_coverage: counts which lines and branches run (preset coverage, scripts/coverage). For the
# library, and for tests that have copies of its inline functions; adapters, fakes and the test kit
# are not what is measured. Counted atomically: threads are what the library is about.
option(KOVASMGR_COVERAGE "Count what the tests reach of the library" OFF)
add_library(kovasmgr_coverage INTERFACE)
if(KOVASMGR_COVERAGE)
  target_compile_options(kovasmgr_coverage INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(kovasmgr_coverage INTERFACE --coverage)
endif()

# kovasmgr_link_time_objects, kovasmgr_link_time: optimise across files what is shipped; the first for
# what is compiled, the second for what is linked of it. A processor that comes back from the kernel has
# forgotten where calls return to: on the way of a write each call that is not made inline costs more
# than the work in it. Fat objects, so that tests link them as they are.
add_library(kovasmgr_link_time_objects INTERFACE)
add_library(kovasmgr_link_time INTERFACE)
set(is_shipped "$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release,MinSizeRel,None>>")
target_compile_options(kovasmgr_link_time_objects INTERFACE
  "$<${is_shipped}:-flto=auto;-ffat-lto-objects>")
target_link_options(kovasmgr_link_time INTERFACE "$<${is_shipped}:-flto=auto>")

# SPDX-License-Identifier: MIT
# The whole adapter on mocked machines: plain files that umockdev's library, preloaded, shows a
# program as its /sys and /dev.
find_library(KOVASMGR_UMOCKDEV_PRELOAD NAMES libumockdev-preload.so.0)
find_library(KOVASMGR_UDEV NAMES udev)
if(NOT KOVASMGR_UMOCKDEV_PRELOAD OR NOT KOVASMGR_UDEV)
  message(FATAL_ERROR "The tests of the Linux adapter need umockdev and libudev "
    "(Debian: umockdev, libudev-dev). Without tests: -DKOVASMGR_BUILD_TESTS=OFF")
endif()

add_library(adapter_linux_mocks OBJECT
  mock_calls.cpp mock_device.cpp mock_events.cpp mock_ioctls.cpp mock_machine.cpp mock_system.cpp
  mock_terminal.cpp)
target_link_libraries(adapter_linux_mocks
  PRIVATE kovasmgr_build_settings
  PUBLIC test_harness Threads::Threads ${CMAKE_DL_LIBS} "${KOVASMGR_UDEV}")

# kovasmgr_add_mocked_tests(<target> SOURCES <file>...)
function(kovasmgr_add_mocked_tests target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES")
  add_executable(${target} ${arg_SOURCES})
  # What a mock puts in a library function's place must be found before the library's.
  set_target_properties(${target} PROPERTIES ENABLE_EXPORTS ON)
  target_link_libraries(${target} PRIVATE
    KOVASMgr::KOVASMgr kovasmgr_build_settings adapter_linux_mocks GTest::gtest GTest::gtest_main)
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST NO_PRETTY_VALUES
    PROPERTIES TIMEOUT 60 ENVIRONMENT "${KOVASMGR_TEST_ENVIRONMENT}"
      ENVIRONMENT_MODIFICATION "LD_PRELOAD=set:${KOVASMGR_UMOCKDEV_PRELOAD}")
endfunction()

kovasmgr_add_mocked_tests(adapter_linux_mock_tests SOURCES mock_machine_test.cpp)

if(TARGET adapter_linux)
  set(KOVASMGR_LINUX_ADAPTER_DEFINITIONS
    "KOVASMGR_LINUX_ADAPTER=\"$<TARGET_FILE:adapter_linux>\""
    "KOVASMGR_VIRTUAL_ADAPTER=\"$<TARGET_FILE:adapter_virtual>\"")

  kovasmgr_add_mocked_tests(adapter_linux_tests
    SOURCES
      adapter_life_test.cpp enumeration_test.cpp hotplug_test.cpp lost_events_test.cpp
      neighbour_test.cpp open_mocked_port_test.cpp set_line_test.cpp udevd_test.cpp
      linux_bench.cpp ../adapter_under_test.cpp ../notice_recorder.cpp)
  target_compile_definitions(adapter_linux_tests PRIVATE ${KOVASMGR_LINUX_ADAPTER_DEFINITIONS})
  add_dependencies(adapter_linux_tests adapter_linux)

  # Without mocks: the machine's own events.
  kovasmgr_add_tests(adapter_linux_kernel_events_tests SHARED
    SOURCES kernel_events_test.cpp ../adapter_under_test.cpp ../notice_recorder.cpp
    LIBRARIES ${CMAKE_DL_LIBS})
  target_compile_definitions(adapter_linux_kernel_events_tests PRIVATE
    ${KOVASMGR_LINUX_ADAPTER_DEFINITIONS})
  add_dependencies(adapter_linux_kernel_events_tests adapter_linux)
endif()

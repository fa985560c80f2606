// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_PROCESS_COUNTS_H
#define KOVASMGR_TESTS_HARNESS_PROCESS_COUNTS_H

#include <cstddef>

/// Open descriptors of this process.
std::size_t OpenDescriptors();

/// Threads of this process.
std::size_t RunningThreads();

#endif

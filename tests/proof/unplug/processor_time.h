// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_PROCESSOR_TIME_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_PROCESSOR_TIME_H

#include <gtest/gtest.h>

/// Watches the process for 150 ms: a thread that spins takes all of a processor, or what others
/// leave of it, and a process at rest next to nothing. Failure is more than a quarter of the time.
testing::AssertionResult IsIdle();

#endif

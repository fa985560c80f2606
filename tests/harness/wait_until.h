// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_WAIT_UNTIL_H
#define KOVASMGR_TESTS_HARNESS_WAIT_UNTIL_H

#include <chrono>
#include <functional>

/// Waits for a condition, by asking every millisecond. The one place in the tests that sleeps.
/// @return false when it has not come true within the bound.
bool WaitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds bound = std::chrono::seconds(10));

#endif

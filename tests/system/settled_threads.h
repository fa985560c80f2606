// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_SYSTEM_SETTLED_THREADS_H
#define KOVASMGR_TESTS_SYSTEM_SETTLED_THREADS_H

#include <cstddef>

/// The threads of a process that has not started any: one, or more where a sanitizer's run time
/// keeps some of its own beside the first one started.
std::size_t SettledThreads();

/// Waits until there are so many threads. One that has been joined is still counted for a moment.
bool WaitUntilThreadsAre(std::size_t count);

#endif

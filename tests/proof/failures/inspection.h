// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_INSPECTION_H
#define KOVASMGR_TESTS_PROOF_FAILURES_INSPECTION_H

#include <cstddef>
#include <string>
#include <vector>

#include "tests/proof/failures/side_thread.h"

/// Lets the other thread take every lock of the library (the gate, that of the device-state
/// callbacks, that of the ports, those of the log), and compares the two containers of ports.
/// Ends the process when a lock is held.
/// @return what did not hold, a line each, with the name of the step before.
std::string Inspect(SideThread& thread, const std::string& step);

/// What this process holds from the system.
struct Holdings {
    std::size_t threads;
    std::vector<std::string> descriptors; ///< what each leads to, sorted, without the log's

    static Holdings Now();
};

/// Waits until the process holds what it held before: a thread that was joined is counted for a
/// moment more.
/// @return what it holds too many or too few, a line each.
std::string Difference(const Holdings& before);

#endif

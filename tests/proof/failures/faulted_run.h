// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_FAULTED_RUN_H
#define KOVASMGR_TESTS_PROOF_FAILURES_FAULTED_RUN_H

#include <functional>
#include <string>

#include "tests/proof/failures/child_run.h"
#include "tests/proof/failures/fault.h"

/// A trouble for the script: how it begins, how it ends, and what is special about it.
struct Ordeal {
    std::string logDirectory;
    /// Where the second life logs. A log that could not be opened is opened by another path only.
    std::string secondLogDirectory;
    std::function<void()> begin;
    std::function<void()> end;
};

/// Plays the script in this process while a trouble lasts, then looks at what it has left behind,
/// and plays it once more without. The adapter is linked into the current directory.
///
/// @return besides what PlayScript reports, whether
/// - a thread, a descriptor, the adapter, an un-registration or a handle is lost after the release;
/// - the second life is not like any other, with its bytes, its notices and its log.
std::string RunThrough(const Ordeal& ordeal);

/// The same with a fault, in a scratch directory of its own.
ChildReport RunWithFault(const Fault& fault);

#endif

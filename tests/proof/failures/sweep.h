// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_SWEEP_H
#define KOVASMGR_TESTS_PROOF_FAILURES_SWEEP_H

#include <optional>

#include "tests/proof/failures/fault.h"

/// Which events a sweep looks at.
struct Reach {
    long every = 1; ///< leaves out the ones between
    /// Runs, for events of which there are ever more while time passes. The others have an end.
    std::optional<long> most{};
};

/// Runs the script with the first event of this kind failing, then with the second, and so on until
/// a run has no event left that could fail, some runs at a time in processes of their own. Whatever
/// does not hold is a failure of the test, with the number of the event.
///
/// @return how many events were the first to fail
long Sweep(Trouble trouble, Manner manner, const Reach& reach = {});

#endif

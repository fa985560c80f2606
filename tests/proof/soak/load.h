// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_LOAD_H
#define KOVASMGR_TESTS_PROOF_SOAK_LOAD_H

#include <chrono>
#include <cstdint>

#include "tests/proof/soak/log_keeper.h"
#include "tests/proof/soak/process_state.h"
#include "tests/proof/soak/soak_adapter.h"

/// What came of the load.
struct Outcome {
    double seconds = 0;
    ProcessState warm{};
    ProcessState last{};
    uint64_t bytes = 0;
    long moves = 0;
    double longestCallMs = 0;
    const char* longestCall = "";
};

/// Puts the initialised library under load for so long, or until something is found wrong. What the
/// process holds is taken down when the first fifth is over, a minute at most, and at the end.
Outcome Load(SoakAdapterControl& adapter, LogKeeper& log, std::chrono::seconds time);

#endif

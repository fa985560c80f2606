// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_PROCESS_STATE_H
#define KOVASMGR_TESTS_PROOF_SOAK_PROCESS_STATE_H

#include <cstddef>

/// What this process holds at a moment.
struct ProcessState {
    long residentKb;
    long allocatedKb; // handed out by malloc and not freed
    std::size_t descriptors;
    std::size_t threads;

    static ProcessState Now();
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_HOST_THREADS_H
#define KOVASMGR_TESTS_PROOF_SOAK_HOST_THREADS_H

#include "tests/proof/soak/stage.h"

constexpr std::size_t kHostThreads = 16;

/// Puts the threads of a host on the stage: eight write to four ports each, three open and close
/// what comes and goes, three register and un-register callbacks, two enumerate.
void AddHostThreads(Stage& stage);

#endif

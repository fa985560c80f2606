// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_SEED_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_SEED_H

#include <cstdint>

/// Where the random numbers of a test begin: at what the environment variable KOVASMGR_SEED says,
/// else somewhere new each time. Printed, so that a failing schedule can be tried again (its order
/// comes back, its timing only roughly).
uint32_t Seed();

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_CALLBACKS_DISTURBANCE_H
#define KOVASMGR_TESTS_PROOF_CALLBACKS_DISTURBANCE_H

#include <cstdint>

/// Random numbers of the calling thread, without a lock: each thread has a sequence of its own,
/// which follows from where they all begin and from how many threads asked before it.
class Disturbance {
  public:
    static void Start(uint32_t beginning);

    /// From 0 to limit - 1.
    static uint32_t Below(uint32_t limit);

    /// Gives the processor away now and then, a few times or for some microseconds.
    static void Yield();
};

#endif

// SPDX-License-Identifier: MIT
#include "tests/proof/callbacks/disturbance.h"

#include <sched.h>

#include <atomic>

namespace {

std::atomic<uint32_t> s_NextSeed{1};

uint32_t Next() {
    static thread_local uint32_t state = s_NextSeed.fetch_add(0x9E3779B9U) | 1U;
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

} // namespace

void Disturbance::Start(uint32_t beginning) { s_NextSeed = beginning; }

uint32_t Disturbance::Below(uint32_t limit) { return Next() % limit; }

void Disturbance::Yield() {
    const uint32_t choice = Below(64);
    const uint32_t times = choice == 0 ? 100 : choice < 8 ? choice : 0;
    for (uint32_t i = 0; i < times; ++i) {
        sched_yield();
    }
}

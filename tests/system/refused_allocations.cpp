// SPDX-License-Identifier: MIT
#include "tests/system/refused_allocations.h"

#include <atomic>

#include "tests/system/replaced_malloc.h"

namespace {

thread_local bool t_IsRefused = false;
std::atomic<int> s_Refused{0};

} // namespace

bool IsAllocationRefused() {
    if (t_IsRefused) {
        ++s_Refused;
    }
    return t_IsRefused;
}

void RefuseAllocations(bool refuse) { t_IsRefused = refuse; }

int RefusedAllocations() { return s_Refused; }

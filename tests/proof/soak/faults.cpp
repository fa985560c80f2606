// SPDX-License-Identifier: MIT
#include "tests/proof/soak/faults.h"

#include <atomic>
#include <cstddef>
#include <iterator>

namespace {

std::atomic<bool> g_IsOn{false};
std::atomic<long> g_Injected{0};

// Primes, so that in time every port meets every fault.
constexpr long kEvery[] = {11, 13, 101, 31, 211, 7};
std::atomic<long> g_Calls[std::size(kEvery)];

} // namespace

namespace faults {

void SwitchOn(bool isOn) { g_IsOn = isOn; }

bool IsDue(Fault fault) {
    const auto kind = static_cast<std::size_t>(fault);
    if (!g_IsOn || ++g_Calls[kind] % kEvery[kind] != 0) {
        return false;
    }
    ++g_Injected;
    return true;
}

long Injected() { return g_Injected; }

} // namespace faults

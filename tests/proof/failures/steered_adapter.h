// SPDX-License-Identifier: MIT
//
// What the adapter of this folder shares with the test program, which holds it, so that it outlives
// the adapter's unloading. The adapter allocates nothing: what fails inside a call of the library is
// the library's own.
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_STEERED_ADAPTER_H
#define KOVASMGR_TESTS_PROOF_FAILURES_STEERED_ADAPTER_H

#include <array>
#include <atomic>

#include "OSAdapt.h"

/// The ports, in the order of enumeration; the first two belong to the device that stays, the third
/// to the one that comes and goes. Names are too long for a std::string to hold them in place.
enum SteeredPort { kFirstPort, kSecondPort, kGuestPort, kSteeredPorts };
constexpr const char* kPortNames[] = {"/dev/the first port of the resident",
                                      "/dev/the second port of the resident",
                                      "/dev/the only port of the guest"};

struct SteeredState {
    std::atomic<bool> isGuestAttached{false};
    std::atomic<OS_ADAPT_STATUS_CALLBACK> callback{nullptr};
    std::atomic<int> lastHandle{0};
    /// The handle by which each port is open; 0 while it is closed.
    std::array<std::atomic<int>, kSteeredPorts> handles{};
    /// Whether the latest close of each was made to fail, so that its handle may stay open.
    std::array<std::atomic<bool>, kSteeredPorts> isCloseRefused{};
    std::atomic<int> strayCalls{0}; ///< calls with a handle that is not open
    std::atomic<long> reads{0};     ///< of which every one finds some bytes
};

extern "C" {
extern KOVASMGR_API SteeredState g_SteeredAdapter;

/// What an adapter's function asks first. May throw.
KOVASMGR_API int PassAdapterCall();
KOVASMGR_API int PassAdapterRead();
}

#endif

// SPDX-License-Identifier: MIT
#include "adapters/spy/call.h"

#include <time.h>

#include <algorithm>

const char* NameOf(OSADAPT_SPY_KIND kind) {
    constexpr const char* kNames[OSADAPT_SPY_KINDS] = {
        "register", "unregister", "open", "close", "write", "read", "enumerate", "notice"};
    return kNames[kind];
}

size_t Call::BytesMoved() const {
    if (data == nullptr || !HasSucceeded()) {
        return 0;
    }
    return static_cast<size_t>(std::max(0L, std::min(count, length)));
}

int64_t MonotonicNs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

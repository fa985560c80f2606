// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_STATS_STATS_H
#define KOVASCTL_STATS_STATS_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "OSAdaptSpy.h"

/// The counters of one port, or of what concerns none.
struct PortStats {
    std::string name;
    std::array<OSADAPT_SPY_CALLS, OSADAPT_SPY_KINDS> calls{};
    uint64_t bytesIn = 0;
    uint64_t bytesOut = 0;
    uint64_t shortWrites = 0;

    const OSADAPT_SPY_CALLS& Of(OSADAPT_SPY_KIND kind) const {
        return calls[static_cast<size_t>(kind)];
    }
};

/// What a spy has counted of a host up to a moment.
struct HostStats {
    int process = 0;
    std::string processName;
    std::string adapter; // the file behind the spy
    std::chrono::system_clock::time_point since;
    std::chrono::steady_clock::time_point taken;
    PortStats whole; // what concerns no port
    std::vector<PortStats> ports;
    uint32_t portsLeftOut = 0; // counted in whole
};

/// "write"; "notice" for notices.
const char* NameOf(OSADAPT_SPY_KIND kind);

/// The kinds of calls that are of a port.
constexpr std::array<OSADAPT_SPY_KIND, 4> kPortCalls = {OSADAPT_SPY_OPEN, OSADAPT_SPY_CLOSE,
                                                        OSADAPT_SPY_WRITE, OSADAPT_SPY_READ};

/// All kinds.
std::vector<OSADAPT_SPY_KIND> AllCalls();

#endif

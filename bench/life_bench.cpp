// SPDX-License-Identifier: MIT
//
//     kovasmgr_life_bench [DEVICES] [PORTS OF EACH]
//
// What KOVAMGR_Init adds to the time that it spends in the adapter, and how long KOVAMGR_Release
// takes with all ports open, when nothing hangs.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <stdexcept>

#include "KOVASMgr.h"
#include "bench/null_adapter.h"
#include "bench/running_manager.h"

namespace {

using Clock = std::chrono::steady_clock;

double MillisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void Need(int result) {
    if (result != KOVAMGR_OK) {
        throw std::runtime_error("the library does not work; see KOVASMgr.log");
    }
}

void Measure(int devices, int portsEach) {
    const NullAdapter adapter(devices, portsEach);
    const auto secondsInside =
        adapter.Resolve<decltype(&NullAdapter_SecondsInside)>("NullAdapter_SecondsInside");
    std::filesystem::current_path(BenchDirectory() + "/adapter");
    auto start = Clock::now();
    Need(KOVAMGR_Init(BenchDirectory().c_str()));
    const double init = MillisecondsSince(start);
    const double inside = secondsInside() * 1e3;
    for (int port = 1; port <= devices * portsEach; ++port) {
        Need(KOVAMGR_Open(port));
    }
    start = Clock::now();
    Need(KOVAMGR_Release());
    const double release = MillisecondsSince(start);
    std::printf("life ports=%d init_ms=%.3f init_adapter_ms=%.3f init_beside_adapter_ms=%.3f "
                "release_ms=%.3f\n",
                devices * portsEach, init, inside, init - inside, release);
}

} // namespace

int main(int count, char** arguments) {
    try {
        Measure(count > 1 ? std::atoi(arguments[1]) : 64, count > 2 ? std::atoi(arguments[2]) : 16);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

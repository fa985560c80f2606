// SPDX-License-Identifier: MIT
//
//     kovasmgr_idle_bench [PORTS] [SECONDS]
//
// What the read thread costs while nothing arrives at any of its open ports; with 0 ports, what a
// thread costs that polls one descriptor and sleeps as long.
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>

#include "bench/terminal_host.h"

namespace {

using Clock = std::chrono::steady_clock;

void Report(const char* what, int ports, const MeasuredThread& thread, int seconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200)); // what came before has settled
    const double usedBefore = thread.Seconds();
    const long sleepsBefore = thread.Sleeps();
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const double used = thread.Seconds() - usedBefore;
    const auto sweeps = static_cast<double>(thread.Sleeps() - sleepsBefore);
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("idle %s ports=%d cpu_us_per_second=%.1f sweeps_per_second=%.2f\n", what, ports,
                used / passed * 1e6, sweeps / passed);
}

void MeasureBareLoop(int seconds) {
    int ends[2];
    if (pipe(ends) != 0) {
        return;
    }
    std::atomic<bool> isEnding{false};
    std::atomic<bool> isRunning{false};
    MeasuredThread thread;
    std::thread loop([&] {
        thread = MeasuredThread::This();
        isRunning = true;
        while (!isEnding) {
            pollfd entry{ends[0], POLLIN, 0};
            poll(&entry, 1, 0);
            usleep(10000);
        }
    });
    while (!isRunning) {
        std::this_thread::yield();
    }
    Report("bare", 0, thread, seconds);
    isEnding = true;
    loop.join();
}

} // namespace

int main(int count, char** arguments) {
    const int ports = NumberArgument(count, arguments, 1, 1);
    const int seconds = NumberArgument(count, arguments, 2, 2);
    try {
        if (ports == 0) {
            MeasureBareLoop(seconds);
        } else {
            const TerminalHost host(ports);
            Report("manager", ports, host.ReadThread(), seconds);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

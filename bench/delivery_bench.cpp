// SPDX-License-Identifier: MIT
//
//     kovasmgr_delivery_bench [PORTS] [SAMPLES]
//
// How long a few bytes take from a far end's write to the read callback, at a moment that has
// nothing to do with the sweeps, while the other ports are idle; with 0 ports, to a thread that
// reads one terminal and sleeps 10 ms.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <random>
#include <stdexcept>
#include <thread>
#include <vector>

#include "adapters/shared/terminal.h"
#include "bench/terminal_host.h"

namespace {

using Clock = std::chrono::steady_clock;

std::vector<double> g_Milliseconds;
std::atomic<size_t> g_Arrived{0};

// The bytes are the moment at which they were written.
void Take(void* data, int length) {
    const auto now = Clock::now();
    Clock::time_point written;
    if (length == sizeof written) {
        std::memcpy(&written, data, sizeof written);
        g_Milliseconds.push_back(std::chrono::duration<double, std::milli>(now - written).count());
        ++g_Arrived;
    }
}

void Send(int farEnd) {
    const Clock::time_point now = Clock::now();
    if (write(farEnd, &now, sizeof now) != sizeof now) {
        throw std::runtime_error("a far end takes nothing");
    }
}

// Waits long enough between two samples that the next one meets any phase of the sweep.
void SendSamples(size_t samples, const std::function<int()>& farEnd) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> microseconds(0, 10000);
    g_Milliseconds.reserve(samples);
    for (size_t sent = 1; sent <= samples; ++sent) {
        Send(farEnd());
        while (g_Arrived < sent) {
            usleep(2000);
        }
        usleep(static_cast<useconds_t>(microseconds(random)));
    }
}

void Report(const char* what, int ports) {
    std::sort(g_Milliseconds.begin(), g_Milliseconds.end());
    const size_t samples = g_Milliseconds.size();
    std::printf("delivery %s ports=%d samples=%zu p50_ms=%.2f p99_ms=%.2f max_ms=%.2f\n", what,
                ports, samples, g_Milliseconds[samples / 2], g_Milliseconds[samples * 99 / 100],
                g_Milliseconds.back());
}

void MeasureManager(int ports, size_t samples) {
    TerminalHost host(ports);
    host.CallBack(Take);
    std::mt19937 random(7);
    std::uniform_int_distribution<int> port(1, ports);
    SendSamples(samples, [&] { return host.FarEnd(port(random)); });
    Report("manager", ports);
}

void MeasureBareLoop(size_t samples) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    grantpt(master);
    unlockpt(master);
    const int slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_NONBLOCK);
    MakeRaw(slave);
    std::atomic<bool> isEnding{false};
    std::thread loop([&] {
        char buffer[4096];
        while (!isEnding) {
            const ssize_t got = read(slave, buffer, sizeof buffer);
            if (got > 0) {
                Take(buffer, static_cast<int>(got));
            }
            usleep(10000);
        }
    });
    SendSamples(samples, [&] { return master; });
    isEnding = true;
    loop.join();
    Report("bare", 0);
}

} // namespace

int main(int count, char** arguments) {
    const int ports = NumberArgument(count, arguments, 1, 1);
    const auto samples = static_cast<size_t>(NumberArgument(count, arguments, 2, 300));
    try {
        if (ports == 0) {
            MeasureBareLoop(samples);
        } else {
            MeasureManager(ports, samples);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

// SPDX-License-Identifier: MIT
//
//     kovasmgr_delivery_bench [PORTS] [SAMPLES]
//
// How long a few bytes take from a far end's write to the read callback, at a moment that has
// nothing to do with the sweeps, while the other ports are idle. Each time the same goes to a thread
// that reads one terminal and sleeps as long as the read thread.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <random>
#include <stdexcept>
#include <vector>

#include "adapters/shared/terminal.h"
#include "bench/bare_loop.h"
#include "bench/terminal_host.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Arrivals {
    // The bytes are the moment at which they were written.
    void Take(const void* data, int length) {
        const auto now = Clock::now();
        Clock::time_point written;
        if (length == sizeof written) {
            std::memcpy(&written, data, sizeof written);
            milliseconds.push_back(
                std::chrono::duration<double, std::milli>(now - written).count());
            ++count;
        }
    }

    double Part(size_t percent) {
        std::sort(milliseconds.begin(), milliseconds.end());
        return milliseconds[milliseconds.size() * percent / 100];
    }

    std::vector<double> milliseconds;
    std::atomic<size_t> count{0};
};

Arrivals g_AtHost;
Arrivals g_AtLoop;

void TakeAtHost(void* data, int length) { g_AtHost.Take(data, length); }

void Send(int farEnd) {
    const Clock::time_point now = Clock::now();
    if (write(farEnd, &now, sizeof now) != sizeof now) {
        throw std::runtime_error("a far end takes nothing");
    }
}

struct Pair {
    Pair() : master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        grantpt(master);
        unlockpt(master);
        slave = open(ptsname(master), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (MakeRaw(slave) != 0) {
            throw std::runtime_error("no pseudo-terminal");
        }
    }

    int master;
    int slave = -1;
};

// The pause after each sample makes the next one meet any phase of the sweep.
void SendSamples(const TerminalHost& host, int loopsFarEnd, size_t samples) {
    std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<int> port(1, host.Ports());
    std::uniform_int_distribution<useconds_t> microseconds(0, 10000);
    for (size_t sent = 1; sent <= samples; ++sent) {
        Send(host.FarEnd(port(random)));
        Send(loopsFarEnd);
        while (g_AtHost.count < sent || g_AtLoop.count < sent) {
            usleep(2000);
        }
        usleep(microseconds(random));
    }
}

void Measure(const TerminalHost& host, size_t samples) {
    g_AtHost.milliseconds.reserve(samples);
    g_AtLoop.milliseconds.reserve(samples);
    const Pair pair;
    BareLoop loop([terminal = pair.slave] {
        char buffer[4096];
        const Transfer got = ReadAvailable(terminal, buffer, sizeof buffer);
        g_AtLoop.Take(buffer, static_cast<int>(got.count));
    });
    loop.Switch(true);
    SendSamples(host, pair.master, samples);
    std::printf("delivery ports=%d samples=%zu p50_ms=%.2f p99_ms=%.2f bare_loop_p50_ms=%.2f "
                "bare_loop_p99_ms=%.2f\n",
                host.Ports(), samples, g_AtHost.Part(50), g_AtHost.Part(99), g_AtLoop.Part(50),
                g_AtLoop.Part(99));
}

} // namespace

int main(int count, char** arguments) {
    try {
        const TerminalHost host(NumberArgument(count, arguments, 1, 1));
        host.CallBack(TakeAtHost);
        Measure(host, static_cast<size_t>(NumberArgument(count, arguments, 2, 1000)));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

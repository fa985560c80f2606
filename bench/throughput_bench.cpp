// SPDX-License-Identifier: MIT
//
//     kovasmgr_throughput_bench [PORTS] [SECONDS]
//
// How many bytes a second arrive at the read callbacks while every far end sends as fast as its
// terminal takes it, beside the ceiling that the sweeps set: a read of every port in each, as large
// as the largest that a terminal gave. Every byte is compared. What counts is every call of the
// adapter's read, so that a read which finds nothing is one that was missed. Reads and bytes are
// counted by the read thread itself, between two deliveries of the first port: what lies between
// them are whole sweeps, with the bytes of these and no others.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>
#include <vector>

#include "bench/numbered_bytes.h"
#include "bench/port_callbacks.h"
#include "bench/terminal_host.h"

namespace {

using Clock = std::chrono::steady_clock;

// Written by the read thread only.
std::atomic<size_t> g_Bytes{0};
std::atomic<size_t> g_LargestRead{0};
std::array<NumberedBytes, PortCallbacks::kMost> g_Expected;
std::atomic<bool> g_AreWrong{false};

struct Counts {
    long reads = 0;
    size_t bytes = 0;
    Clock::time_point time;
};

const TerminalHost* g_Host = nullptr;
Counts g_Counts;
std::atomic<bool> g_AreCountsWanted{false}; // they are there as soon as it is false again

void Take(size_t port, const void* data, size_t length) {
    if (!g_Expected[port].Expect(data, length)) {
        g_AreWrong = true;
    }
    g_Bytes = g_Bytes + length;
    g_LargestRead = std::max<size_t>(g_LargestRead, length);
    if (port == 0 && g_AreCountsWanted) {
        g_Counts = Counts{g_Host->Reads(), g_Bytes, Clock::now()};
        g_AreCountsWanted = false;
    }
}

Counts Count() {
    g_AreCountsWanted = true;
    while (g_AreCountsWanted) {
        usleep(100);
    }
    return g_Counts;
}

// @return how many the terminals took
size_t SendUntil(const std::atomic<bool>& isEnding, const TerminalHost& host) {
    std::vector<NumberedBytes> bytes(static_cast<size_t>(host.Ports()));
    std::vector<pollfd> farEnds;
    for (int port = 1; port <= host.Ports(); ++port) {
        farEnds.push_back(pollfd{host.FarEnd(port), POLLOUT, 0});
    }
    while (!isEnding) {
        poll(farEnds.data(), farEnds.size(), 10);
        for (size_t i = 0; i < farEnds.size(); ++i) {
            ssize_t sent = farEnds[i].revents & POLLOUT;
            while (sent > 0) {
                sent = write(farEnds[i].fd, bytes[i].Next(), NumberedBytes::kLongest);
                bytes[i].Pass(sent > 0 ? static_cast<size_t>(sent) : 0);
            }
        }
    }
    size_t sent = 0;
    for (const NumberedBytes& each : bytes) {
        sent += each.Count();
    }
    return sent;
}

// What was taken and does not arrive within a moment is lost.
size_t Lost(size_t sent) {
    for (int i = 0; i < 500 && g_Bytes < sent; ++i) {
        usleep(10000);
    }
    return sent - g_Bytes;
}

void Measure(const TerminalHost& host, int seconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // the terminals are full
    const Counts before = Count();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const Counts after = Count();
    const auto bytes = static_cast<double>(after.bytes - before.bytes);
    const auto reads = static_cast<double>(after.reads - before.reads);
    const double passed = std::chrono::duration<double>(after.time - before.time).count();
    const double ceiling = reads * static_cast<double>(g_LargestRead);
    std::printf("throughput manager ports=%d bytes_per_second=%.0f sweeps_per_second=%.2f "
                "largest_read=%zu ceiling=%.0f of_ceiling=%.5f",
                host.Ports(), bytes / passed, reads / host.Ports() / passed, g_LargestRead.load(),
                ceiling / passed, bytes / ceiling);
}

} // namespace

int main(int count, char** arguments) {
    try {
        const TerminalHost host(NumberArgument(count, arguments, 1, 1));
        g_Host = &host;
        PortCallbacks::Register(static_cast<size_t>(host.Ports()), Take);
        std::atomic<bool> isEnding{false};
        size_t sent = 0;
        std::thread sender([&] { sent = SendUntil(isEnding, host); });
        Measure(host, NumberArgument(count, arguments, 2, 2));
        isEnding = true;
        sender.join();
        std::printf(" lost=%zu wrong=%d\n", Lost(sent), g_AreWrong ? 1 : 0);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

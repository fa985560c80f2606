// SPDX-License-Identifier: MIT
//
//     kovasmgr_throughput_bench [PORTS] [SECONDS]
//
// How many bytes a second arrive at the read callbacks while every far end sends as fast as its
// terminal takes it, beside the ceiling that the sweeps set: a read of every port in each, as large
// as the largest that a terminal gave. Every byte is compared. Sweeps are counted as the deliveries of the port that had
// most.
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
std::array<std::atomic<long>, PortCallbacks::kMost> g_Deliveries{};
std::array<NumberedBytes, PortCallbacks::kMost> g_Expected;
std::atomic<bool> g_AreWrong{false};

void Take(size_t port, const void* data, size_t length) {
    if (!g_Expected[port].Expect(data, length)) {
        g_AreWrong = true;
    }
    g_Deliveries[port] = g_Deliveries[port] + 1;
    g_Bytes = g_Bytes + length;
    g_LargestRead = std::max<size_t>(g_LargestRead, length);
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

std::vector<long> Deliveries() { return {g_Deliveries.begin(), g_Deliveries.end()}; }

long LargestDifference(const std::vector<long>& after, const std::vector<long>& before) {
    long largest = 0;
    for (size_t i = 0; i < after.size(); ++i) {
        largest = std::max(largest, after[i] - before[i]);
    }
    return largest;
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
    const size_t bytesBefore = g_Bytes;
    const std::vector<long> deliveriesBefore = Deliveries();
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto bytes = static_cast<double>(g_Bytes - bytesBefore);
    const auto sweeps = static_cast<double>(LargestDifference(Deliveries(), deliveriesBefore));
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    const double ceiling = sweeps * static_cast<double>(g_LargestRead) * host.Ports();
    std::printf("throughput manager ports=%d bytes_per_second=%.0f sweeps_per_second=%.2f "
                "largest_read=%zu ceiling=%.0f of_ceiling=%.3f",
                host.Ports(), bytes / passed, sweeps / passed, g_LargestRead.load(),
                ceiling / passed, bytes / ceiling);
}

} // namespace

int main(int count, char** arguments) {
    try {
        const TerminalHost host(NumberArgument(count, arguments, 1, 1));
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

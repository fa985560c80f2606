// SPDX-License-Identifier: MIT
//
//     kovasmgr_throughput_bench [PORTS] [SECONDS]
//
// How many bytes a second arrive at the read callbacks while every far end sends as fast as its
// terminal takes it, beside the ceiling that the sweeps set: a read of every port in each, as large
// as the largest that a terminal gave. Sweeps are counted as the deliveries of the port that had
// most.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>
#include <thread>
#include <vector>

#include "bench/terminal_host.h"

namespace {

using Clock = std::chrono::steady_clock;

// Written by the read thread only.
std::atomic<long> g_Bytes{0};
std::atomic<long> g_LargestRead{0};
std::array<std::atomic<long>, 256> g_Deliveries{};

// Each port sends a byte of its own.
void Take(void* data, int length) {
    std::atomic<long>& deliveries = g_Deliveries[*static_cast<const unsigned char*>(data)];
    deliveries = deliveries + 1;
    g_Bytes = g_Bytes + length;
    g_LargestRead = std::max<long>(g_LargestRead, length);
}

void SendUntil(const std::atomic<bool>& isEnding, const TerminalHost& host) {
    std::vector<std::string> blocks;
    std::vector<pollfd> farEnds;
    for (int port = 1; port <= host.Ports(); ++port) {
        blocks.emplace_back(4096, static_cast<char>(port));
        farEnds.push_back(pollfd{host.FarEnd(port), POLLOUT, 0});
    }
    while (!isEnding) {
        poll(farEnds.data(), farEnds.size(), 10);
        for (size_t i = 0; i < farEnds.size(); ++i) {
            while ((farEnds[i].revents & POLLOUT) != 0 &&
                   write(farEnds[i].fd, blocks[i].data(), blocks[i].size()) > 0) {
            }
        }
    }
}

std::vector<long> Deliveries() { return {g_Deliveries.begin(), g_Deliveries.end()}; }

long LargestDifference(const std::vector<long>& after, const std::vector<long>& before) {
    long largest = 0;
    for (size_t i = 0; i < after.size(); ++i) {
        largest = std::max(largest, after[i] - before[i]);
    }
    return largest;
}

void Measure(const TerminalHost& host, int seconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // the terminals are full
    const long bytesBefore = g_Bytes;
    const std::vector<long> deliveriesBefore = Deliveries();
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto bytes = static_cast<double>(g_Bytes - bytesBefore);
    const auto sweeps = static_cast<double>(LargestDifference(Deliveries(), deliveriesBefore));
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    const double ceiling = sweeps * static_cast<double>(g_LargestRead) * host.Ports();
    std::printf("throughput manager ports=%d bytes_per_second=%.0f sweeps_per_second=%.2f "
                "largest_read=%ld ceiling=%.0f of_ceiling=%.3f\n",
                host.Ports(), bytes / passed, sweeps / passed, g_LargestRead.load(),
                ceiling / passed, bytes / ceiling);
}

} // namespace

int main(int count, char** arguments) {
    try {
        const TerminalHost host(NumberArgument(count, arguments, 1, 1));
        host.CallBack(Take);
        std::atomic<bool> isEnding{false};
        std::thread sender([&] { SendUntil(isEnding, host); });
        Measure(host, NumberArgument(count, arguments, 2, 2));
        isEnding = true;
        sender.join();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}

// SPDX-License-Identifier: MIT
#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>

#include "bench/compare/far_side.h"
#include "bench/compare/measures.h"
#include "bench/compare/usage.h"
#include "bench/numbered_bytes.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t kMostPorts = 64;

// What a line of 3 megabaud brings, in pieces of two milliseconds.
constexpr size_t kPieceBytes = 600;
constexpr std::chrono::microseconds kPieceTime{2000};

std::array<NumberedBytes, kMostPorts> g_Expected;
std::atomic<size_t> g_Received{0};
std::atomic<bool> g_AreWrong{false};
std::atomic<bool> g_IsOver{false};

void Take(size_t port, const void* data, size_t length) {
    if (g_IsOver) {
        return; // the byte that ends the run
    }
    if (!g_Expected[port].Expect(data, length)) {
        g_AreWrong = true;
    }
    g_Received += length;
}

struct FarEnd {
    int descriptor;
    NumberedBytes bytes;

    // @return how many the terminal took
    size_t Send(size_t count) {
        const ssize_t sent = write(descriptor, bytes.Next(), count);
        bytes.Pass(sent > 0 ? static_cast<size_t>(sent) : 0);
        return sent > 0 ? static_cast<size_t>(sent) : 0;
    }
};

std::vector<FarEnd> FarEnds(const Subject& subject, size_t ports) {
    std::vector<FarEnd> ends;
    for (size_t port = 0; port < ports; ++port) {
        ends.push_back(FarEnd{subject.FarEnd(port), {}});
    }
    return ends;
}

// What has been taken and not yet delivered arrives, or is lost. Ends the comparison.
size_t Lost(const std::vector<FarEnd>& ends) {
    size_t sent = 0;
    for (const FarEnd& end : ends) {
        sent += end.bytes.Count();
    }
    const auto start = Clock::now();
    while (g_Received < sent && SecondsSince(start) < 5) {
        usleep(10000);
    }
    g_IsOver = true;
    return sent - g_Received;
}

void SendFlatOut(std::vector<FarEnd>& ends, double seconds) {
    std::vector<pollfd> polled;
    for (const FarEnd& end : ends) {
        polled.push_back(pollfd{end.descriptor, POLLOUT, 0});
    }
    for (const auto start = Clock::now(); SecondsSince(start) < seconds;) {
        poll(polled.data(), polled.size(), 10);
        for (size_t port = 0; port < ends.size(); ++port) {
            if ((polled[port].revents & POLLOUT) != 0) {
                ends[port].Send(NumberedBytes::kLongest);
            }
        }
    }
}

// @return how many bytes found no room
size_t SendPaced(std::vector<FarEnd>& ends, double seconds) {
    size_t refused = 0;
    auto next = Clock::now();
    for (const auto start = next; SecondsSince(start) < seconds;) {
        for (FarEnd& end : ends) {
            refused += kPieceBytes - end.Send(kPieceBytes);
        }
        next += kPieceTime;
        const auto left =
            std::chrono::duration_cast<std::chrono::microseconds>(next - Clock::now());
        if (left.count() > 0) {
            usleep(static_cast<useconds_t>(left.count()));
        }
    }
    return refused;
}

} // namespace

void MeasureThroughput(size_t ports, size_t seconds) {
    const auto subject = MakeSubject(ports, Take);
    std::vector<FarEnd> ends = FarEnds(*subject, ports);
    RunAgainst(*subject, [&] {
        const auto start = Clock::now();
        const Usage before = Usage::OfOthers();
        SendFlatOut(ends, static_cast<double>(seconds));
        const auto received = static_cast<double>(g_Received);
        const double passed = SecondsSince(start);
        const Usage used = Usage::OfOthers() - before;
        const size_t lost = Lost(ends);
        std::printf("throughput ports=%zu bytes_per_second=%.0f cpu_ms_per_mb=%.3f lost=%zu "
                    "wrong=%d\n",
                    ports, received / passed, used.seconds * 1e3 / (received * 1e-6), lost,
                    g_AreWrong ? 1 : 0);
    });
}

void MeasurePaced(size_t ports, size_t seconds) {
    const auto subject = MakeSubject(ports, Take);
    std::vector<FarEnd> ends = FarEnds(*subject, ports);
    RunAgainst(*subject, [&] {
        const Usage before = Usage::OfOthers();
        const size_t refused = SendPaced(ends, static_cast<double>(seconds));
        const Usage used = Usage::OfOthers() - before;
        const size_t lost = Lost(ends);
        const auto received = static_cast<double>(g_Received);
        std::printf("paced ports=%zu bytes_per_second=%.0f cpu_ms_per_mb=%.3f refused=%zu lost=%zu "
                    "wrong=%d\n",
                    ports, received / static_cast<double>(seconds),
                    used.seconds * 1e3 / (received * 1e-6), refused, lost, g_AreWrong ? 1 : 0);
    });
}

// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <stdexcept>

#include "bench/compare/far_side.h"
#include "bench/compare/measures.h"
#include "bench/compare/usage.h"

namespace {

using Clock = std::chrono::steady_clock;

std::vector<double> g_Microseconds;
std::atomic<size_t> g_Count{0};

// The bytes are the moment at which they were written.
void Take(size_t, const void* data, size_t length) {
    const auto now = Clock::now();
    Clock::time_point written;
    if (length == sizeof written) {
        std::memcpy(&written, data, sizeof written);
        g_Microseconds.push_back(std::chrono::duration<double, std::micro>(now - written).count());
        ++g_Count;
    }
}

void Send(int farEnd) {
    const Clock::time_point now = Clock::now();
    if (write(farEnd, &now, sizeof now) != sizeof now) {
        throw std::runtime_error("a far end takes nothing");
    }
}

} // namespace

void MeasureDelivery(size_t ports, size_t samples) {
    const auto subject = MakeSubject(ports, Take);
    g_Microseconds.reserve(samples);
    std::mt19937 random(std::random_device{}());
    RunAgainst(*subject, [&] {
        for (size_t sent = 1; sent <= samples; ++sent) {
            usleep(1000 + static_cast<useconds_t>(random() % 10000));
            Send(subject->FarEnd(random() % ports));
            while (g_Count < sent) {
                usleep(500);
            }
        }
    });
    std::printf("delivery ports=%zu samples=%zu p50_us=%.1f p99_us=%.1f\n", ports, samples,
                Part(g_Microseconds, 50), Part(g_Microseconds, 99));
}

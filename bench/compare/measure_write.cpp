// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "bench/compare/measures.h"
#include "bench/compare/subject.h"
#include "bench/compare/usage.h"

namespace {

using Clock = std::chrono::steady_clock;

// A turn writes less than the kernel keeps for a terminal that nobody reads.
constexpr size_t kTurnBytes = 8192;
constexpr size_t kMostWrites = 64;

// What is still on its way arrives within a moment.
void Drain(int farEnd, size_t bytes) {
    char buffer[4096];
    while (bytes > 0) {
        const ssize_t count = read(farEnd, buffer, sizeof buffer);
        bytes -= count > 0 ? static_cast<size_t>(count) : 0;
    }
}

// Nanoseconds of one.
template <typename Write> double Turn(size_t writes, Write write) {
    const auto start = Clock::now();
    for (size_t i = 0; i < writes; ++i) {
        write();
    }
    return SecondsSince(start) * 1e9 / static_cast<double>(writes);
}

void Refuse(size_t, const void*, size_t) {}

} // namespace

void MeasureWrite(size_t bytes, size_t turns) {
    const auto subject = MakeSubject(1, Refuse);
    const int farEnd = subject->FarEnd(0);
    const int terminal = open(ptsname(farEnd), O_RDWR | O_NOCTTY | O_NONBLOCK);
    const std::string block(bytes, 'x');
    const size_t writes = std::clamp<size_t>(kTurnBytes / bytes, 1, kMostWrites);
    std::vector<double> library;
    std::vector<double> bare;
    for (size_t turn = 0; turn < turns; ++turn) {
        library.push_back(Turn(writes, [&] { subject->Write(0, block.data(), bytes); }));
        Drain(farEnd, writes * bytes);
        bare.push_back(Turn(writes, [&] {
            if (write(terminal, block.data(), bytes) != static_cast<ssize_t>(bytes)) {
                throw std::runtime_error("a bare write is short");
            }
        }));
        Drain(farEnd, writes * bytes);
    }
    close(terminal);
    const double cost = Part(library, 50);
    const double floor = Part(bare, 50);
    std::printf("write bytes=%zu ns=%.0f bare_ns=%.0f to_bare=%.5f\n", bytes, cost, floor,
                cost / floor);
}

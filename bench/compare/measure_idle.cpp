// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "bench/compare/far_side.h"
#include "bench/compare/measures.h"
#include "bench/compare/usage.h"

namespace {

using Clock = std::chrono::steady_clock;

void Ignore(size_t, const void*, size_t) {}

} // namespace

void MeasureIdle(size_t ports, size_t seconds) {
    const auto subject = MakeSubject(ports, Ignore);
    RunAgainst(*subject, [&] {
        usleep(200000); // what opening has stirred up has settled
        const auto start = Clock::now();
        const Usage before = Usage::OfOthers();
        sleep(static_cast<unsigned>(seconds));
        const Usage used = Usage::OfOthers() - before;
        const double passed = SecondsSince(start);
        std::printf("idle ports=%zu cpu_ms_per_second=%.3f switches_per_second=%.1f\n", ports,
                    used.seconds * 1e3 / passed, used.switches / passed);
    });
}

void MeasureEnumeration(size_t ports, size_t turns) {
    const auto subject = MakeSubject(ports, Ignore);
    std::vector<double> microseconds;
    long found = 0;
    for (size_t turn = 0; turn < turns && found >= 0; ++turn) {
        const auto start = Clock::now();
        found = subject->Enumerate();
        microseconds.push_back(SecondsSince(start) * 1e6);
    }
    if (found >= 0) {
        std::printf("enumeration found=%ld us=%.1f\n", found, Part(microseconds, 50));
    }
}

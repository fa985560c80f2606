// SPDX-License-Identifier: MIT
#include "tests/proof/unplug/processor_time.h"

#include <chrono>
#include <ctime>

#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kSlack = 0.02; // seconds; for what is done once

double Spent() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

} // namespace

testing::AssertionResult IsIdle() {
    const double before = Spent();
    const auto start = Clock::now();
    WaitUntil([] { return false; }, std::chrono::milliseconds(150));
    const double spent = Spent() - before;
    const double passed = std::chrono::duration<double>(Clock::now() - start).count();
    if (spent > passed / 4 + kSlack) {
        return testing::AssertionFailure() << spent << " s of processor time in " << passed << " s";
    }
    return testing::AssertionSuccess();
}

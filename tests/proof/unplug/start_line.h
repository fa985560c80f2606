// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_START_LINE_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_START_LINE_H

#include <atomic>
#include <chrono>
#include <thread>

/// Where threads wait for each other, to go on together, each with a delay of its own.
class StartLine {
  public:
    using Time = std::chrono::microseconds;

    explicit StartLine(int threads) : m_Missing(threads) {}

    /// Goes on when all have come and so much time has passed, within microseconds.
    void Leave(Time delay) {
        --m_Missing;
        while (m_Missing > 0) {
            std::this_thread::yield();
        }
        Pass(delay);
    }

    /// Lets time pass, awake, as a sleeping thread is not back in time.
    static void Pass(Time delay) {
        const auto end = std::chrono::steady_clock::now() + delay;
        while (std::chrono::steady_clock::now() < end) {
            std::this_thread::yield();
        }
    }

  private:
    std::atomic<int> m_Missing;
};

#endif

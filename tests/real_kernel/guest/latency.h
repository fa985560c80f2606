// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_LATENCY_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_LATENCY_H

#include <chrono>
#include <string>
#include <vector>

/// Times that something took, in milliseconds.
class Times {
  public:
    void Add(std::chrono::steady_clock::duration time);

    /// The time that this share of all does not exceed: 0.5, 0.99.
    double Percentile(double share) const;

    /// "p50 31 ms, p99 44 ms, n 20"
    std::string Text() const;

  private:
    std::vector<double> m_Times;
};

/// Plugs an adapter in and pulls it out again and again, and tells the time to the notice: of an
/// insertion from the last event of `source` ("udev" or "kernel"), of a pull-out from the kernel's,
/// which is all that is needed there. Does it as often as KOVASMGR_LATENCY_RUNS
/// says, once unless told, and tells each run's times.
void MeasureNotices(const std::string& source);

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_COMPARE_USAGE_H
#define KOVASMGR_BENCH_COMPARE_USAGE_H

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <vector>

/// What a process or a thread has used so far.
struct Usage {
    static Usage Of(int who) { // RUSAGE_SELF: the process; RUSAGE_THREAD: the calling thread
        rusage usage{};
        getrusage(who, &usage);
        return {Seconds(usage.ru_utime) + Seconds(usage.ru_stime),
                static_cast<double>(usage.ru_nvcsw + usage.ru_nivcsw)};
    }

    /// The process without the calling thread, which is the far ends'.
    static Usage OfOthers() { return Of(RUSAGE_SELF) - Of(RUSAGE_THREAD); }

    // The kernel's counts of the two are not taken at quite the same moment.
    Usage operator-(const Usage& other) const {
        return {std::max(seconds - other.seconds, 0.0), std::max(switches - other.switches, 0.0)};
    }

    double seconds;  // of a processor
    double switches; // of context

  private:
    static double Seconds(const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    }
};

inline double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The value below which so many percent are.
inline double Part(std::vector<double>& values, size_t percent) {
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() * percent / 100, values.size() - 1)];
}

#endif

// SPDX-License-Identifier: MIT
//
// Bounds for what an adapter may never end, and measures for what it does.
#ifndef KOVASCTL_CONFORMANCE_TIMED_H
#define KOVASCTL_CONFORMANCE_TIMED_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

class Stopwatch {
  public:
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_Start).count();
    }

  private:
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

/// Runs a function on a thread of its own. One that does not end is left behind, so it must refer to
/// nothing that ends before the process.
/// @return whether it has ended in time
bool EndsWithin(double seconds, std::function<void()> function);

/// The same without a bound.
void RunOnThread(const std::function<void()>& function);

/// Asks again and again.
/// @return whether the condition has held within the time
bool HoldsWithin(double seconds, const std::function<bool()>& condition);

/// Whether a condition fails to hold for all of the time.
inline bool StaysFalse(double seconds, const std::function<bool()>& condition) {
    return !HoldsWithin(seconds, condition);
}

/// Keeps a thread until it is opened, or until somebody would call that a hang.
class Gate {
  public:
    void Open();
    /// @return false when it was not opened in time
    bool Wait(double seconds);

  private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_IsOpen = false;
};

/// "12.3 ms", "1.50 s"
std::string DurationText(double seconds);

#endif

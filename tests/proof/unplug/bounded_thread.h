// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_BOUNDED_THREAD_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_BOUNDED_THREAD_H

#include <atomic>
#include <functional>
#include <thread>

/// A thread that must come to its end: one that hangs ends the test's process with a line that says
/// so, as there is no way to go on.
class BoundedThread {
  public:
    BoundedThread(const char* name, std::function<void()> action);
    ~BoundedThread() { Join(); }
    BoundedThread(const BoundedThread&) = delete;
    BoundedThread& operator=(const BoundedThread&) = delete;

    bool HasEnded() const { return m_HasEnded; }

    /// Whether it has come to rest: asleep in the kernel each time for a few milliseconds.
    /// Waits for it; false when it has ended or never rests.
    bool WaitUntilAsleep() const;

    /// Waits for its end, a minute at most.
    void Join();

  private:
    bool IsAsleep() const;

    const char* m_Name;
    std::atomic<long> m_Id{0};
    std::atomic<bool> m_HasEnded{false};
    std::thread m_Thread;
};

#endif

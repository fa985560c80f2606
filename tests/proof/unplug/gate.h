// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_UNPLUG_GATE_H
#define KOVASMGR_TESTS_PROOF_UNPLUG_GATE_H

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Where a thread stands still until the test lets it go on. All waits end after half a minute.
class Gate {
  public:
    /// Stands here while the gate is shut; the first to come is noted.
    void Pass() {
        std::unique_lock<std::mutex> lock(m_Mutex);
        m_HasArrived = true;
        m_Changed.notify_all();
        m_Changed.wait_for(lock, kBound, [this] { return m_IsOpen; });
    }

    bool WaitForArrival() {
        std::unique_lock<std::mutex> lock(m_Mutex);
        return m_Changed.wait_for(lock, kBound, [this] { return m_HasArrived; });
    }

    void Open() {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        m_IsOpen = true;
        m_Changed.notify_all();
    }

  private:
    static constexpr std::chrono::seconds kBound{30};

    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    bool m_HasArrived = false;
    bool m_IsOpen = false;
};

#endif

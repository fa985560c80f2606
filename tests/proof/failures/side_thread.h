// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_SIDE_THREAD_H
#define KOVASMGR_TESTS_PROOF_FAILURES_SIDE_THREAD_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// A thread that lives as long as this object and runs one task after the other, spared from the
/// fault except where a task says otherwise. That it is there already lets the script's threads
/// start without a thread start or an allocation of theirs being counted.
class SideThread {
  public:
    SideThread();
    ~SideThread();
    SideThread(const SideThread&) = delete;
    SideThread& operator=(const SideThread&) = delete;

    /// Runs a task, which must not throw, to its end. Ends the process when that takes longer than
    /// 30 s: the thread hangs then, and whoever joined it would hang as well.
    void Run(const std::function<void()>& task);

  private:
    void Work();

    std::mutex m_Mutex; // guards what follows
    std::condition_variable m_Changed;
    const std::function<void()>* m_pTask = nullptr;
    bool m_IsOver = false;

    std::thread m_Thread;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_CONDITION_H
#define KOVASMGR_ADAPTERS_CONDITION_H

#include <pthread.h>

#include <chrono>
#include <mutex>

/// A condition whose waits may be cancelled: std::condition_variable waits inside noexcept
/// functions, where a cancellation ends the process. The lock is held again while the stack
/// unwinds.
class Condition {
  public:
    Condition();
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void Wait(std::unique_lock<std::mutex>& lock);

    /// May wake early.
    void WaitUntil(std::unique_lock<std::mutex>& lock, std::chrono::steady_clock::time_point when);

    void NotifyAll();

  private:
    pthread_cond_t m_Handle;
};

#endif

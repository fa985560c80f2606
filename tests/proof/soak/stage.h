// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_SOAK_STAGE_H
#define KOVASMGR_TESTS_PROOF_SOAK_STAGE_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

/// The threads that make the load: they run in steps, can be paused between two of them, and end
/// together.
///
/// Threads: Add, Pause, Resume and End belong to one owner, the rest to the threads of the stage.
class Stage {
  public:
    using Clock = std::chrono::steady_clock;

    Stage() = default;
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    /// Runs a body, which asks Next before each step and returns when it says no.
    void Add(std::function<void()> body);

    /// Waits for so long, and for the end of a pause.
    /// @return false when the load is over
    bool Next(std::chrono::microseconds wait);

    /// Waits until no thread is in a step; without effect on those that are to be left running.
    void Pause();
    void Resume();
    bool IsPaused() const;
    void End();

    std::size_t Threads() const { return m_Threads.size(); }

  private:
    mutable std::mutex m_Mutex; // guards what follows
    std::condition_variable m_Changed;
    bool m_IsPaused = false;
    bool m_IsOver = false;
    std::size_t m_Idle = 0;
    std::vector<std::thread> m_Threads; // the owner's
};

#endif

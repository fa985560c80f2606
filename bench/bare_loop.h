// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_BARE_LOOP_H
#define KOVASMGR_BENCH_BARE_LOOP_H

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "bench/terminal_host.h"

/// A thread that does one thing and sleeps as long as the read thread does, again and again while
/// it is switched on: the least that a polling reader can cost.
class BareLoop {
  public:
    explicit BareLoop(std::function<void()> step);
    ~BareLoop();
    BareLoop(const BareLoop&) = delete;
    BareLoop& operator=(const BareLoop&) = delete;

    void Switch(bool isOn);

    const MeasuredThread& Thread() const { return m_Measured; }

  private:
    void Run();
    bool WaitUntilOn();

    const std::function<void()> m_Step;
    MeasuredThread m_Measured;
    std::mutex m_Mutex; // guards the next three
    std::condition_variable m_Changed;
    bool m_IsStarted = false;
    bool m_IsEnding = false;
    std::atomic<bool> m_IsOn{false};
    std::thread m_Thread;
};

#endif

// SPDX-License-Identifier: MIT
#include "bench/bare_loop.h"

#include <unistd.h>

#include <utility>

using Lock = std::unique_lock<std::mutex>;

BareLoop::BareLoop(std::function<void()> step)
    : m_Step(std::move(step)), m_Thread([this] { Run(); }) {
    Lock lock(m_Mutex);
    m_Changed.wait(lock, [this] { return m_IsStarted; });
}

BareLoop::~BareLoop() {
    {
        const Lock lock(m_Mutex);
        m_IsEnding = true;
        m_IsOn = false;
    }
    m_Changed.notify_all();
    m_Thread.join();
}

void BareLoop::Switch(bool isOn) {
    {
        const Lock lock(m_Mutex);
        m_IsOn = isOn;
    }
    m_Changed.notify_all();
}

void BareLoop::Run() {
    {
        const Lock lock(m_Mutex);
        m_Measured = MeasuredThread::This();
        m_IsStarted = true;
    }
    m_Changed.notify_all();
    while (WaitUntilOn()) {
        while (m_IsOn) {
            m_Step();
            usleep(10000);
        }
    }
}

bool BareLoop::WaitUntilOn() {
    Lock lock(m_Mutex);
    m_Changed.wait(lock, [this] { return m_IsOn || m_IsEnding; });
    return !m_IsEnding;
}

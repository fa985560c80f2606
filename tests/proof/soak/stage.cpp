// SPDX-License-Identifier: MIT
#include "tests/proof/soak/stage.h"

#include <utility>

using Lock = std::unique_lock<std::mutex>;

Stage::~Stage() { End(); }

void Stage::Add(std::function<void()> body) { m_Threads.emplace_back(std::move(body)); }

bool Stage::Next(std::chrono::microseconds wait) {
    Lock lock(m_Mutex);
    const auto due = Clock::now() + wait;
    m_Changed.wait_until(lock, due, [&] { return m_IsPaused || m_IsOver; });
    if (m_IsPaused) {
        ++m_Idle;
        m_Changed.notify_all();
        m_Changed.wait(lock, [&] { return !m_IsPaused || m_IsOver; });
        --m_Idle;
    }
    return !m_IsOver;
}

void Stage::Pause() {
    Lock lock(m_Mutex);
    m_IsPaused = true;
    m_Changed.notify_all();
    m_Changed.wait(lock, [&] { return m_Idle == m_Threads.size(); });
}

void Stage::Resume() {
    const Lock lock(m_Mutex);
    m_IsPaused = false;
    m_Changed.notify_all();
}

bool Stage::IsPaused() const {
    const Lock lock(m_Mutex);
    return m_IsPaused;
}

void Stage::End() {
    {
        const Lock lock(m_Mutex);
        m_IsOver = true;
        m_Changed.notify_all();
    }
    for (std::thread& thread : m_Threads) {
        thread.join();
    }
    m_Threads.clear();
}

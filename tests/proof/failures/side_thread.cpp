// SPDX-License-Identifier: MIT
#include "tests/proof/failures/side_thread.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "tests/proof/failures/fault.h"

SideThread::SideThread() : m_Thread(&SideThread::Work, this) {}

SideThread::~SideThread() {
    {
        std::lock_guard<std::mutex> lock(m_Mutex);
        m_IsOver = true;
    }
    m_Changed.notify_all();
    m_Thread.join();
}

void SideThread::Run(const std::function<void()>& task) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_pTask = &task;
    m_Changed.notify_all();
    if (!m_Changed.wait_for(lock, std::chrono::seconds(30),
                            [this] { return m_pTask == nullptr; })) {
        std::fputs("a thread hangs\n", stderr);
        std::abort();
    }
}

void SideThread::Work() {
    const Spared spared;
    std::unique_lock<std::mutex> lock(m_Mutex);
    for (;;) {
        m_Changed.wait(lock, [this] { return m_pTask != nullptr || m_IsOver; });
        if (m_IsOver) {
            return;
        }
        lock.unlock();
        (*m_pTask)();
        lock.lock();
        m_pTask = nullptr;
        m_Changed.notify_all();
    }
}

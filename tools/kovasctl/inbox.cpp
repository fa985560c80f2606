// SPDX-License-Identifier: MIT
#include "tools/kovasctl/inbox.h"

#include <utility>

std::string Inbox::Take() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Wakeup.Clear();
    m_Changed.notify_all();
    return std::exchange(m_Data, std::string());
}

void Inbox::Append(const char* data, size_t length) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Changed.wait_for(lock, kPause, [&] { return m_IsStopped || m_Data.size() < kMuch; });
    if (!m_IsStopped) {
        m_Data.append(data, length);
        m_Wakeup.Set();
    }
}

void Inbox::Stop() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_IsStopped = true;
    m_Changed.notify_all();
}

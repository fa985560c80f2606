// SPDX-License-Identifier: MIT
#include "adapters/shared/readiness.h"

#include <new>

#include "adapters/shared/cancel_shield.h"

void Readiness::Watch(int handle, int descriptor) {
    if (!m_Set.IsOpen()) {
        m_Set = UniqueFd(epoll_create1(EPOLL_CLOEXEC));
    }
    epoll_event event{};
    event.events = EPOLLIN; // and, unasked, EPOLLHUP and EPOLLERR
    event.data.fd = handle;
    if (Enter(handle, descriptor) &&
        epoll_ctl(m_Set.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        m_Watched.erase(handle);
    }
    EndIfUnused();
}

void Readiness::Forget(int handle) {
    const auto found = m_Watched.find(handle);
    if (found == m_Watched.end()) {
        return;
    }
    epoll_ctl(m_Set.Get(), EPOLL_CTL_DEL, found->second.descriptor, nullptr);
    m_Watched.erase(found);
    EndIfUnused();
}

// @return false when there is no memory.
bool Readiness::Enter(int handle, int descriptor) {
    try {
        m_Events.resize(m_Watched.size() + 1);
        m_Watched.emplace(handle, Watched{descriptor, m_Round - 1, m_Round});
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// With the memory of both containers, which clearing them would keep.
void Readiness::EndIfUnused() {
    if (m_Watched.empty()) {
        m_Set.Reset();
        m_Watched = std::unordered_map<int, Watched>();
        m_Events = std::vector<epoll_event>();
    }
}

void Readiness::StartRound(Clock::time_point now) {
    const CancelShield shield;
    ++m_Round;
    m_RoundStart = now;
    const int count =
        epoll_wait(m_Set.Get(), m_Events.data(), static_cast<int>(m_Events.size()), 0);
    if (count < 0) {
        for (auto& watched : m_Watched) {
            watched.second.readyIn = m_Round;
        }
    }
    for (int i = 0; i < count; ++i) {
        const auto found = m_Watched.find(m_Events[static_cast<size_t>(i)].data.fd);
        if (found != m_Watched.end()) {
            found->second.readyIn = m_Round;
        }
    }
}

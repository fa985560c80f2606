// SPDX-License-Identifier: MIT
#include "adapters/shared/readiness.h"

#include <unistd.h>

#include <algorithm>
#include <new>

#include "adapters/shared/cancel_shield.h"

void Readiness::Watch(int handle, int descriptor) {
    LeaveParentsSet();
    if (!m_Set.IsOpen()) {
        m_Owner = getpid();
        m_Set = UniqueFd(epoll_create1(EPOLL_CLOEXEC));
    }
    epoll_event event{};
    event.events = EPOLLIN; // and, unasked, EPOLLHUP and EPOLLERR
    event.data.fd = handle;
    if (Enter(handle, descriptor) &&
        epoll_ctl(m_Set.Get(), EPOLL_CTL_ADD, descriptor, &event) != 0) {
        m_Watched.pop_back();
    }
    EndIfUnused();
}

void Readiness::Forget(int handle) {
    LeaveParentsSet();
    const size_t place = FindPlace(handle);
    if (place == m_Watched.size()) {
        return;
    }
    const auto watched = m_Watched.begin() + static_cast<std::ptrdiff_t>(place);
    epoll_ctl(m_Set.Get(), EPOLL_CTL_DEL, watched->descriptor, nullptr);
    m_Watched.erase(watched);
    EndIfUnused();
}

// A forked child has the same set as its parent: what it changed there, its parent would miss. What
// the child has inherited is read without asking.
void Readiness::LeaveParentsSet() {
    if (m_Set.IsOpen() && m_Owner != getpid()) {
        m_Watched.clear();
        EndIfUnused();
    }
}

// @return as many as there are when it is not among them.
size_t Readiness::FindPlace(int handle) const {
    const auto found = std::lower_bound(
        m_Watched.begin(), m_Watched.end(), handle,
        [](const Watched& watched, int wanted) { return watched.handle < wanted; });
    const bool isFound = found != m_Watched.end() && found->handle == handle;
    return static_cast<size_t>((isFound ? found : m_Watched.end()) - m_Watched.begin());
}

// @return false when there is no memory.
bool Readiness::Enter(int handle, int descriptor) {
    try {
        m_Events.resize(m_Watched.size() + 1);
        m_Watched.push_back(Watched{handle, descriptor, m_Round - 1, m_Round});
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// With the memory of both containers, which clearing them would keep.
void Readiness::EndIfUnused() {
    if (m_Watched.empty()) {
        m_Set.Reset();
        m_Watched = std::vector<Watched>();
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
        for (Watched& watched : m_Watched) {
            watched.readyIn = m_Round;
        }
    }
    for (int i = 0; i < count; ++i) {
        const size_t place = FindPlace(m_Events[static_cast<size_t>(i)].data.fd);
        if (place != m_Watched.size()) {
            m_Watched[place].readyIn = m_Round;
        }
    }
}

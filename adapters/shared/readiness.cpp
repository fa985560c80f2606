// SPDX-License-Identifier: MIT
#include "adapters/shared/readiness.h"

#include <unistd.h>

#include <new>

#include "adapters/shared/cancel_shield.h"

using Lock = std::lock_guard<std::mutex>;

void Readiness::Watch(int handle, int descriptor) {
    const Lock lock(m_Mutex);
    LeaveParentsSet();
    Place& place = PlaceOf(handle);
    if (place.handle == kNoHandle && Add(handle, descriptor)) {
        place.descriptor = descriptor;
        place.state = Ready(m_Round);
        place.handle.store(handle, std::memory_order_release);
    }
    EndIfUnused();
}

void Readiness::Forget(int handle) {
    const Lock lock(m_Mutex);
    LeaveParentsSet();
    Place& place = PlaceOf(handle);
    if (place.handle != handle || handle == kNoHandle) {
        return;
    }
    place.handle = kNoHandle;
    epoll_ctl(m_Set.Get(), EPOLL_CTL_DEL, place.descriptor, nullptr);
    m_Events.pop_back();
    EndIfUnused();
}

// A forked child has the same set as its parent: what it changed there, its parent would miss. What
// the child has inherited is read without asking.
void Readiness::LeaveParentsSet() {
    if (m_Set.IsOpen() && m_Owner != getpid()) {
        for (Place& place : m_Places) {
            place.handle = kNoHandle;
        }
        m_Events.clear();
        EndIfUnused();
    }
}

// @return false when the kernel does not watch it, or there is no memory.
bool Readiness::Add(int handle, int descriptor) {
    if (!m_Set.IsOpen()) {
        m_Owner = getpid();
        m_Set = UniqueFd(epoll_create1(EPOLL_CLOEXEC));
    }
    epoll_event event{};
    event.events = EPOLLIN; // and, unasked, EPOLLHUP and EPOLLERR
    event.data.fd = handle;
    try {
        m_Events.push_back(event);
    } catch (const std::bad_alloc&) {
        return false;
    }
    const bool isWatched = epoll_ctl(m_Set.Get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
    if (!isWatched) {
        m_Events.pop_back();
    }
    return isWatched;
}

// With the memory of the answers, which clearing them would keep.
void Readiness::EndIfUnused() {
    if (m_Events.empty()) {
        m_Set.Reset();
        m_Events = std::vector<epoll_event>();
    }
}

void Readiness::StartRound() {
    const CancelShield shield;
    const Lock lock(m_Mutex);
    const int64_t now = Tick(); // before the answer, which is younger
    const int count =
        epoll_wait(m_Set.Get(), m_Events.data(), static_cast<int>(m_Events.size()), 0);
    const uint32_t round = m_Round + 1;
    if (count < 0) {
        for (Place& place : m_Places) {
            place.state = Ready(round);
        }
    }
    for (int i = 0; i < count; ++i) {
        PlaceOf(m_Events[static_cast<size_t>(i)].data.fd).state = Ready(round);
    }
    m_Round.store(round, std::memory_order_release);
    m_RoundStart.store(now, std::memory_order_release);
}

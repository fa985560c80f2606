// SPDX-License-Identifier: MIT
#include "tools/kovasctl/sim/arrivals.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace {

// More is a line of its own.
constexpr size_t kMostPerArrival = 4096;

template <size_t Slot> void OnData(void* data, int length) {
    SimArrivals::Deliver(Slot, data, length);
}

template <size_t... Slots>
constexpr std::array<KOVAMGR_READ_CALLBACK, sizeof...(Slots)>
MakeCallbacks(std::index_sequence<Slots...> /*slots*/) {
    return {OnData<Slots>...};
}

constexpr auto kCallbacks = MakeCallbacks(std::make_index_sequence<SimArrivals::kMostPorts>());

} // namespace

SimArrivals* SimArrivals::s_Active = nullptr;

SimArrivals::SimArrivals() : m_Ports(kMostPorts) { s_Active = this; }

SimArrivals::~SimArrivals() { s_Active = nullptr; }

KOVAMGR_READ_CALLBACK SimArrivals::Add(const std::string& port) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto free = std::find(m_Ports.begin(), m_Ports.end(), "");
    if (free == m_Ports.end()) {
        return nullptr;
    }
    *free = port;
    return kCallbacks[static_cast<size_t>(free - m_Ports.begin())];
}

void SimArrivals::Remove(KOVAMGR_READ_CALLBACK callback) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    const auto found = std::find(kCallbacks.begin(), kCallbacks.end(), callback);
    if (found != kCallbacks.end()) {
        m_Ports[static_cast<size_t>(found - kCallbacks.begin())].clear();
    }
}

std::deque<SimArrivals::Arrival> SimArrivals::Take() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    m_Wakeup.Clear();
    m_Waiting = 0;
    return std::exchange(m_Queue, {});
}

size_t SimArrivals::TakeDropped() {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return std::exchange(m_Dropped, 0);
}

// Exceptions must not leave a callback; without memory these bytes are not shown.
void SimArrivals::Deliver(size_t slot, const void* data, int length) {
    try {
        s_Active->Append(slot, static_cast<const char*>(data), static_cast<size_t>(length));
    } catch (const std::bad_alloc&) {
    }
}

void SimArrivals::Append(size_t slot, const char* data, size_t length) {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    if (m_Waiting + length > kMuch) {
        m_Dropped += length;
        return;
    }
    const std::string& port = m_Ports[slot];
    const bool isNew = m_Queue.empty() || m_Queue.back().port != port ||
                       m_Queue.back().bytes.size() + length > kMostPerArrival;
    if (isNew) {
        m_Queue.push_back({port, ""});
    }
    m_Queue.back().bytes.append(data, length);
    m_Waiting += length;
    m_Wakeup.Set();
}

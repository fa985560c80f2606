// SPDX-License-Identifier: MIT
#include "adapters/shared/handle_table.h"

#include <algorithm>
#include <utility>

#include "adapters/shared/cancel_shield.h"

using Lock = std::lock_guard<std::mutex>;

// What is let go is declared before the lock: it is destroyed after it.

int HandleTable::Add(const std::string& portName, Terminal terminal) {
    const int descriptor = terminal->Descriptor();
    Entry entry;
    entry.portName = portName;
    entry.terminal.push_back(std::move(terminal));
    Terminals dropped;
    const Lock lock(m_Mutex);
    if (m_LastHandle == INT_MAX) {
        return -1;
    }
    m_Entries.emplace(m_LastHandle + 1, std::move(entry));
    const int handle = ++m_LastHandle;
    m_Readiness.Watch(handle, descriptor);
    GiveSeat(handle, descriptor);
    DropPort(portName, handle, dropped);
    SeeOff(dropped);
    return handle;
}

HandleTable::Found HandleTable::Find(int handle) {
    Terminals left;
    const Lock lock(m_Mutex);
    SeeOff(left);
    const auto found = m_Entries.find(handle);
    if (found == m_Entries.end()) {
        return {};
    }
    const Terminals& terminal = found->second.terminal;
    return terminal.empty() ? Found{State::Dead, nullptr} : Found{State::Open, terminal.front()};
}

std::string HandleTable::PortName(int handle) const {
    const Lock lock(m_Mutex);
    const auto found = m_Entries.find(handle);
    return found == m_Entries.end() ? "" : found->second.portName;
}

HandleTable::Terminal HandleTable::FindPort(const std::string& portName) const {
    const Lock lock(m_Mutex);
    for (const auto& entry : m_Entries) {
        if (entry.second.portName == portName && !entry.second.terminal.empty()) {
            return entry.second.terminal.front();
        }
    }
    return nullptr;
}

bool HandleTable::Remove(int handle) {
    Terminals removed;
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    if (entry == m_Entries.end()) {
        return false;
    }
    Detach(*entry, removed);
    SeeOff(removed);
    m_Entries.erase(entry);
    return true;
}

void HandleTable::RemovePort(const std::string& portName) {
    Terminals removed;
    const Lock lock(m_Mutex);
    DropPort(portName, -1, removed);
}

void HandleTable::Kill(int handle) {
    Terminals killed;
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    if (entry != m_Entries.end()) {
        Detach(*entry, killed);
    }
}

void HandleTable::KillPort(const std::string& portName) {
    Terminals killed;
    const Lock lock(m_Mutex);
    for (auto& entry : m_Entries) {
        if (entry.second.portName == portName) {
            Detach(entry, killed);
        }
    }
}

void HandleTable::KillAll() {
    Terminals killed;
    const Lock lock(m_Mutex);
    for (auto& entry : m_Entries) {
        Detach(entry, killed);
    }
    SeeOff(killed);
}

bool HandleTable::TakeDeathNotice(int handle) {
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    return entry != m_Entries.end() && !std::exchange(entry->second.deathNoticed, true);
}

bool HandleTable::TakeStallNotice(int handle) {
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    return entry != m_Entries.end() && !std::exchange(entry->second.stallNoticed, true);
}

void HandleTable::Clear() {
    Terminals cleared;
    const Lock lock(m_Mutex);
    for (auto& entry : m_Entries) {
        Detach(entry, cleared);
    }
    SeeOff(cleared);
    m_Entries.clear();
}

// Not to one who still sits there with a handle of long ago.
void HandleTable::GiveSeat(int handle, int descriptor) {
    Seat& seat = SeatOf(handle);
    if (seat.handle == kNoHandle && !seat.isTaken) {
        seat.descriptor = descriptor;
        seat.handle = handle;
    }
}

// @return whether somebody may be sitting there.
bool HandleTable::TakeSeatAway(int handle) {
    Seat& seat = SeatOf(handle);
    if (seat.handle != handle) {
        return false;
    }
    seat.handle = kNoHandle;
    return seat.isTaken;
}

// Shielded: terminals are closed here.
void HandleTable::LetLeaversGo() {
    const CancelShield shield;
    Terminals left;
    const Lock lock(m_Mutex);
    SeeOff(left);
}

// Nobody, while anybody sits anywhere: that is a moment.
void HandleTable::SeeOff(Terminals& left) {
    const auto isTaken = [](const Seat& seat) { return seat.isTaken.load(); };
    if (!m_Leavers.empty() && std::none_of(m_Seats.begin(), m_Seats.end(), isTaken)) {
        left.splice(left.end(), m_Leavers);
        m_HasLeavers = false;
    }
}

// Who leaves the seat after it was looked at finds the flag set, and waits for the lock.
void HandleTable::Detach(Entries::value_type& entry, Terminals& detached) {
    m_Readiness.Forget(entry.first);
    m_HasLeavers = true;
    Terminals& destination = TakeSeatAway(entry.first) ? m_Leavers : detached;
    destination.splice(destination.end(), entry.second.terminal);
    m_HasLeavers = !m_Leavers.empty();
}

void HandleTable::DropPort(const std::string& portName, int except, Terminals& dropped) {
    for (auto entry = m_Entries.begin(); entry != m_Entries.end();) {
        if (entry->second.portName != portName || entry->first == except) {
            ++entry;
            continue;
        }
        Detach(*entry, dropped);
        entry = m_Entries.erase(entry);
    }
}

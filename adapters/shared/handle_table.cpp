// SPDX-License-Identifier: MIT
#include "adapters/shared/handle_table.h"

#include <utility>

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
    DropPort(portName, handle, dropped);
    return handle;
}

HandleTable::Found HandleTable::Find(int handle) const {
    const Lock lock(m_Mutex);
    const auto found = m_Entries.find(handle);
    if (found == m_Entries.end()) {
        return {};
    }
    const Entry& entry = found->second;
    if (entry.terminal.empty()) {
        return {State::Dead, nullptr, entry.portName};
    }
    return {State::Open, entry.terminal.front(), entry.portName};
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

bool HandleTable::IsIdle(int handle) {
    const Lock lock(m_Mutex);
    return m_Readiness.IsIdle(handle);
}

bool HandleTable::Remove(int handle) {
    Terminals removed;
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    if (entry == m_Entries.end()) {
        return false;
    }
    Detach(*entry, removed);
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
    m_Entries.clear();
}

void HandleTable::Detach(Entries::value_type& entry, Terminals& detached) {
    m_Readiness.Forget(entry.first);
    detached.splice(detached.end(), entry.second.terminal);
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

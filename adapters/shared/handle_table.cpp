// SPDX-License-Identifier: MIT
#include "adapters/shared/handle_table.h"

#include <utility>

using Lock = std::lock_guard<std::mutex>;

int HandleTable::Add(const std::string& portName, Descriptor descriptor) {
    const Lock lock(m_Mutex);
    if (m_LastHandle == INT_MAX) {
        return -1;
    }
    m_Entries.emplace(m_LastHandle + 1, Entry{portName, std::move(descriptor)});
    const int handle = ++m_LastHandle;
    for (auto entry = m_Entries.begin(); entry->first != handle;) {
        entry = entry->second.portName == portName ? m_Entries.erase(entry) : std::next(entry);
    }
    return handle;
}

HandleTable::Found HandleTable::Find(int handle) const {
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    if (entry == m_Entries.end()) {
        return {};
    }
    const Descriptor& descriptor = entry->second.descriptor;
    return {descriptor == nullptr ? State::Dead : State::Open, descriptor, entry->second.portName};
}

bool HandleTable::Remove(int handle) {
    const Lock lock(m_Mutex);
    return m_Entries.erase(handle) > 0;
}

void HandleTable::Kill(int handle) {
    const Lock lock(m_Mutex);
    const auto entry = m_Entries.find(handle);
    if (entry != m_Entries.end()) {
        entry->second.descriptor.reset();
    }
}

void HandleTable::KillPort(const std::string& portName) {
    const Lock lock(m_Mutex);
    for (auto& entry : m_Entries) {
        if (entry.second.portName == portName) {
            entry.second.descriptor.reset();
        }
    }
}

void HandleTable::KillAll() {
    const Lock lock(m_Mutex);
    for (auto& entry : m_Entries) {
        entry.second.descriptor.reset();
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
    const Lock lock(m_Mutex);
    m_Entries.clear();
}

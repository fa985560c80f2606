// SPDX-License-Identifier: MIT
#include "adapters/spy/port_book.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

// Devices that take a new name each time they come must not fill the memory.
constexpr size_t kMaxPorts = 16384;

} // namespace

const KnownPort* PortBook::Named(const std::string& name) {
    const Lock lock(m_Mutex);
    if (const auto found = m_ByName.find(name); found != m_ByName.end()) {
        return found->second;
    }
    if (m_Ports.size() >= kMaxPorts) {
        return nullptr;
    }
    m_Ports.push_back({name, m_Ports.size()});
    return m_ByName[name] = &m_Ports.back();
}

void PortBook::SetHandle(const KnownPort* port, int handle) {
    const Lock lock(m_Mutex);
    if (const auto before = m_HandleOf.find(port); before != m_HandleOf.end()) {
        m_ByHandle.erase(before->second);
    }
    m_HandleOf[port] = handle;
    m_ByHandle[handle] = port;
}

const KnownPort* PortBook::OfHandle(int handle) const {
    const Lock lock(m_Mutex);
    const auto found = m_ByHandle.find(handle);
    return found == m_ByHandle.end() ? nullptr : found->second;
}

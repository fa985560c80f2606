// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tests/proof/model/model.h"
#include "tests/proof/model/model_text.h"

namespace model {
namespace {

bool Shows(const _OS_ADAPT_DEVICEPORTINFO& entry, const Port& port) {
    for (int i = 0; i < std::min(entry.nPortCount, 16); ++i) {
        if (Text(entry.stPort[i].szPortName) == port.name) {
            return true;
        }
    }
    return false;
}

} // namespace

// A failure is told here, and ends it without the last line. Devices that are gone altogether are
// only noted at first, and dropped when all records have been compared.
void Model::Removal() {
    Log("Enter DetermineSubtractPort()");
    if (!Adapter().IsComplete()) {
        Log("Getting interface of OS_ADAPT_EnumDevicePortInfo failed.");
        return;
    }
    if (!EnumerateAdapter()) {
        Log("Enumerate information of ports failed.");
        return;
    }
    Log("DetermineSubtractPort() Enum Device Count=" + std::to_string(m_List.nDeviceCount) + " !");
    std::vector<std::string> vanished;
    for (std::size_t i = 0; i < m_State.devices.size(); ++i) {
        const _OS_ADAPT_DEVICEPORTINFO* const entry = EntryOf(m_State.devices[i]);
        if (entry == nullptr) {
            vanished.push_back(m_State.devices[i].name);
        } else if (static_cast<long>(m_State.devices[i].ports.size()) != entry->nPortCount) {
            CompareDevice(i, *entry);
        } else {
            CountUnchanged(m_State.devices[i], *entry); // taken as unchanged, whatever the names
        }
    }
    for (const std::string& name : vanished) {
        ReleaseDevice(name);
    }
    Log("Leave DetermineSubtractPort()");
}

// The first of this name.
const _OS_ADAPT_DEVICEPORTINFO* Model::EntryOf(const Device& device) {
    for (int i = 0; i < std::min(m_List.nDeviceCount, 64); ++i) {
        if (Text(m_List.stDevice[i].szDeviceName) == device.name) {
            return &m_List.stDevice[i];
        }
    }
    return nullptr;
}

// After each deletion the record that now stands at this place is walked from its first port, which
// is another device's when the one compared has lost its last port; the entry stays the same.
void Model::CompareDevice(std::size_t at, const _OS_ADAPT_DEVICEPORTINFO& entry) {
    std::size_t port = 0;
    while (at < m_State.devices.size() && port < m_State.devices[at].ports.size()) {
        if (Shows(entry, m_State.devices[at].ports[port])) {
            ++port;
            continue;
        }
        CountVanishing(m_State.devices[at], m_State.devices[at].ports[port], entry);
        Vanish(m_State.devices[at].ports[port]);
        port = 0;
    }
}

// The handle that is looked at is that of the tree's copy, where no port is ever open.
void Model::Vanish(const Port& treeCopy) {
    const int id = treeCopy.id;
    if (treeCopy.handle != -1) {
        CloseAnyTime(id);
    }
    DeletePort(id);
}

// By the live record here, which is closed if it is open; whether that worked does not matter.
void Model::ReleaseDevice(const std::string& name) {
    for (std::size_t i = 0; i < m_State.ports.size();) {
        if (m_State.ports[i].device != name) {
            ++i;
            continue;
        }
        const int id = m_State.ports[i].id;
        if (m_State.ports[i].handle != -1) {
            CountIf(CloseAnyTime(id) != KOVAMGR_OK, Quirk::kCloseFailedAtRemoval);
        }
        DeletePort(id);
        i = 0;
    }
}

// The first of this number from each device, then every device without ports, then the first of this
// number from the list.
void Model::DeletePort(int id) {
    const auto isIt = [id](const Port& port) { return port.id == id; };
    for (std::size_t i = 0; i < m_State.devices.size();) {
        std::vector<Port>& ports = m_State.devices[i].ports;
        const auto found = std::find_if(ports.begin(), ports.end(), isIt);
        if (found != ports.end()) {
            Trace("Delete " + found->name + " port in m_stDeviceTree.");
            ports.erase(found);
        }
        if (ports.empty()) {
            m_State.devices.erase(m_State.devices.begin() + static_cast<std::ptrdiff_t>(i));
            i = 0;
        } else {
            ++i;
        }
    }
    const auto found = std::find_if(m_State.ports.begin(), m_State.ports.end(), isIt);
    if (found != m_State.ports.end()) {
        m_State.ports.erase(found);
    }
}

} // namespace model

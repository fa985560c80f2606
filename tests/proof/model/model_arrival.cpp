// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "tests/proof/model/model.h"
#include "tests/proof/model/model_text.h"

namespace model {

bool Model::EnumerateAdapter() {
    std::memset(&m_List, 0, sizeof m_List);
    const bool isDone = Adapter().Enum(4, &m_List) == OS_ADAPT_OK;
    CountList();
    return isDone;
}

// A failure is passed over in silence. Counts are logged as reported; no more is read than there is.
void Model::Arrival() {
    Log("Enter DetermineAddPort()");
    if (!Adapter().IsComplete()) {
        Log("Getting interface of OS_ADAPT_EnumDevicePortInfo failed.");
        return;
    }
    if (EnumerateAdapter()) {
        Log("DetermineAddPort() Enum Device Count=" + std::to_string(m_List.nDeviceCount) + " !");
        for (int i = 0; i < std::min(m_List.nDeviceCount, 64); ++i) {
            const _OS_ADAPT_DEVICEPORTINFO& entry = m_List.stDevice[i];
            Log("DetermineAddPort() Port of Device Count=" + std::to_string(entry.nPortCount) +
                " !");
            for (int j = 0; j < std::min(entry.nPortCount, 16); ++j) {
                Arrive(entry, entry.stPort[j]);
            }
        }
    }
    Log("Leave DetermineAddPort()");
}

void Model::Arrive(const _OS_ADAPT_DEVICEPORTINFO& entry, const _OS_ADAPT_PORTINFO& portEntry) {
    Port port;
    port.name = Text(portEntry.szPortName);
    port.device = Text(entry.szDeviceName);
    port.text = Text(entry.szDeviceText);
    LogName(port.name);
    if (IsKnown(port)) {
        return;
    }
    const int lastBefore = m_State.lastID;
    port.id = NumberFor(portEntry.nPortID);
    CountNumber(port.id, portEntry.nPortID, lastBefore);
    m_State.ports.push_back(port);
    AddToTree(port);
}

// By its name alone, under whatever device.
bool Model::IsKnown(const Port& port) {
    for (const Port& known : m_State.ports) {
        if (known.name == port.name) {
            CountIf(known.device != port.device, Quirk::kKnownElsewhere);
            return true;
        }
    }
    return false;
}

// What the adapter proposes is taken as it is. Else the next number; one pass over the list skips
// those that it meets, and does not begin again.
int Model::NumberFor(int proposed) {
    if (proposed != 0) {
        return proposed;
    }
    ++m_State.lastID;
    for (const Port& port : m_State.ports) {
        if (port.id == m_State.lastID) {
            ++m_State.lastID;
        }
    }
    return m_State.lastID;
}

// Devices of one name are one record.
void Model::AddToTree(const Port& port) {
    for (Device& device : m_State.devices) {
        if (device.name == port.device) {
            device.ports.push_back(port);
            return;
        }
    }
    m_State.devices.push_back({port.device, {port}, port.text});
}

} // namespace model

// SPDX-License-Identifier: MIT
#include "adapters/shared/port_table.h"

#include <algorithm>
#include <cstring>

namespace {

const DeviceEntry* FindDevice(const PortTable& table, const std::string& name) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const DeviceEntry& device) { return device.name == name; });
    return found == table.end() ? nullptr : &*found;
}

bool HasPort(const DeviceEntry& device, const PortEntry& port) {
    return std::any_of(device.ports.begin(), device.ports.end(), [&](const PortEntry& other) {
        return other.arrival == port.arrival && other.name == port.name;
    });
}

DeviceEntry CommonPorts(const DeviceEntry& earlier, const DeviceEntry& later) {
    DeviceEntry common{earlier.name, earlier.text, {}};
    for (const PortEntry& port : earlier.ports) {
        if (HasPort(later, port)) {
            common.ports.push_back(port);
        }
    }
    return common;
}

template <size_t Size> void CopyText(const std::string& text, char (&array)[Size]) {
    const size_t length = std::min(text.size(), Size - 1);
    std::memcpy(array, text.data(), length);
    array[length] = '\0';
}

void FillPort(const PortEntry& port, _OS_ADAPT_PORTINFO& info) {
    CopyText(port.name, info.szPortName);
    info.nPortID = port.proposedId;
    info.nReserved = 0;
}

void FillDevice(const DeviceEntry& device, _OS_ADAPT_DEVICEPORTINFO& info) {
    CopyText(device.name, info.szDeviceName);
    CopyText(device.text, info.szDeviceText);
    const size_t count = std::min<size_t>(device.ports.size(), OS_ADAPT_MAX_PORTS);
    for (size_t i = 0; i < count; ++i) {
        FillPort(device.ports[i], info.stPort[i]);
    }
    info.nPortCount = static_cast<int32_t>(count);
}

} // namespace

size_t CountPorts(const PortTable& table) {
    size_t count = 0;
    for (const DeviceEntry& device : table) {
        count += device.ports.size();
    }
    return count;
}

PortTable CommonPart(const PortTable& earlier, const PortTable& later) {
    PortTable common;
    for (const DeviceEntry& device : earlier) {
        const DeviceEntry* found = FindDevice(later, device.name);
        DeviceEntry kept = found == nullptr ? DeviceEntry{} : CommonPorts(device, *found);
        if (!kept.ports.empty()) {
            common.push_back(std::move(kept));
        }
    }
    return common;
}

void FillList(const PortTable& table, _OS_ADAPT_DEVICEPORTLIST& list) {
    const size_t count = std::min<size_t>(table.size(), OS_ADAPT_MAX_DEVICES);
    for (size_t i = 0; i < count; ++i) {
        FillDevice(table[i], list.stDevice[i]);
    }
    list.nDeviceCount = static_cast<int32_t>(count);
}

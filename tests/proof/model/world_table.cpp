// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tests/proof/model/world.h"

namespace model {
namespace {

template <std::size_t size> void Store(char (&array)[size], const std::string& text) {
    text.copy(array, size);
}

void Fill(_OS_ADAPT_DEVICEPORTINFO& entry, const DeviceEntry& device) {
    Store(entry.szDeviceName, device.name);
    Store(entry.szDeviceText, device.text);
    entry.nPortCount = device.count.value_or(static_cast<int>(device.ports.size()));
    const std::size_t count = std::min<std::size_t>(device.ports.size(), OS_ADAPT_MAX_PORTS);
    for (std::size_t i = 0; i < count; ++i) {
        Store(entry.stPort[i].szPortName, device.ports[i].name);
        entry.stPort[i].nPortID = device.ports[i].id;
    }
}

} // namespace

void Fill(_OS_ADAPT_DEVICEPORTLIST& list, const Table& table) {
    list.nDeviceCount = table.count.value_or(static_cast<int>(table.devices.size()));
    const std::size_t count = std::min<std::size_t>(table.devices.size(), OS_ADAPT_MAX_DEVICES);
    for (std::size_t i = 0; i < count; ++i) {
        Fill(list.stDevice[i], table.devices[i]);
    }
}

} // namespace model

// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "tests/proof/model/model.h"

namespace model {
namespace {

template <std::size_t size> void Copy(char (&array)[size], const std::string& text) {
    text.copy(array, size - 1);
}

void Show(_KOVAMGR_DEVICEINFO& entry, const Device& device) {
    Copy(entry.szDeviceName, device.name);
    Copy(entry.szDeviceText, device.text);
    entry.nPortCount = static_cast<uint32_t>(std::min<std::size_t>(device.ports.size(), 16));
    for (std::size_t i = 0; i < entry.nPortCount; ++i) {
        Copy(entry.stPort[i].szPortName, device.ports[i].name);
        entry.stPort[i].nPortID = device.ports[i].id;
        entry.stPort[i].nPortType = device.ports[i].type;
    }
}

} // namespace

// The count of devices is the true one, also above 64; that of ports stops at 16.
int Model::Enumerate(_KOVAMGR_DEVICEINFOLIST& list) {
    if (!m_State.isInit) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    std::memset(&list, 0, sizeof list);
    list.nDeviceCount = static_cast<uint32_t>(m_State.devices.size());
    for (std::size_t i = 0; i < m_State.devices.size() && i < 64; ++i) {
        Show(list.stDevice[i], m_State.devices[i]);
    }
    return KOVAMGR_OK;
}

} // namespace model

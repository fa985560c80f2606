// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "common/jmutex_guard.h"
#include "manager/port_manager.h"

namespace {

// entry is zeroed, so that a shorter name is terminated.
void Fill(_KOVAMGR_PORTINFO& entry, const _PORT_& port) {
    port.strPortName.copy(entry.szPortName, sizeof(entry.szPortName) - 1);
    entry.nPortID = port.nPortID;
    entry.nPortType = port.nPortType;
}

void Fill(_KOVAMGR_DEVICEINFO& entry, const _COMM_MGR_DEVICE_INFO_& device) {
    const size_t count = std::min<size_t>(device.vecPorts.size(), KOVAMGR_MAX_PORTS);
    entry.nPortCount = static_cast<uint32_t>(count);
    std::memcpy(entry.szDeviceName, device.szDeviceName, sizeof(entry.szDeviceName));
    std::memcpy(entry.szDeviceText, device.szDeviceText, sizeof(entry.szDeviceText));
    for (size_t i = 0; i < count; ++i) {
        Fill(entry.stPort[i], device.vecPorts[i]);
    }
}

} // namespace

int CKOVASMgrPort::EnumeratePortInfo(_KOVAMGR_DEVICEINFOLIST* pList) {
    if (pList == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    if (m_bInit == 0) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    JMutexGuard lock(m_PortMutex);
    std::memset(pList, 0, sizeof(*pList));
    pList->nDeviceCount = static_cast<uint32_t>(m_stDeviceTree.size());
    const size_t count = std::min<size_t>(m_stDeviceTree.size(), KOVAMGR_MAX_DEVICES);
    for (size_t i = 0; i < count; ++i) {
        Fill(pList->stDevice[i], m_stDeviceTree[i]);
    }
    return KOVAMGR_OK;
}

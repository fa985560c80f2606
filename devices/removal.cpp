// SPDX-License-Identifier: MIT
#include <cstdio>

#include "KOVASMgrLog.h"
#include "common/jmutex_guard.h"
#include "devices/enumeration_entry.h"
#include "devices/lookup.h"
#include "devices/port_book.h"
#include "manager/osadapt_binding.h"
#include "manager/port_manager.h"

namespace {

// Null when the device is not reported.
const _OS_ADAPT_DEVICEPORTINFO* FindDevice(const _OS_ADAPT_DEVICEPORTLIST& list,
                                           const char* deviceName) {
    for (int d = 0; d < BoundedDeviceCount(list); ++d) {
        if (BoundedEquals(list.stDevice[d].szDeviceName, deviceName)) {
            return &list.stDevice[d];
        }
    }
    return nullptr;
}

bool HasPort(const _OS_ADAPT_DEVICEPORTINFO& device, const _PORT_& port) {
    for (int p = 0; p < BoundedPortCount(device); ++p) {
        if (BoundedEquals(device.stPort[p].szPortName, port.strPortName.c_str())) {
            return true;
        }
    }
    return false;
}

} // namespace

void CKOVASMgrPort::DetermineSubtractPort() {
    INFO_LOG("Enter DetermineSubtractPort()");
    JMutexGuard lock(m_PortMutex);
    if (!CanEnumerate()) {
        return;
    }
    _OS_ADAPT_DEVICEPORTLIST list = {};
    if (pfnEnumPortInfo(OS_ADAPT_ENUM_ALL, &list) != OS_ADAPT_OK) {
        INFO_LOG("Enumerate information of ports failed.");
        return;
    }
    INFO_LOG("DetermineSubtractPort() Enum Device Count=%d !", list.nDeviceCount);
    for (const std::string& deviceName : RemoveVanishedPorts(list)) {
        ReleaseDevicePorts(deviceName.c_str());
    }
    INFO_LOG("Leave DetermineSubtractPort()");
}

// Removes the ports that present devices have lost, and returns the names of the devices that have
// vanished. A device whose number of ports is unchanged is not looked at further.
std::vector<std::string> CKOVASMgrPort::RemoveVanishedPorts(const _OS_ADAPT_DEVICEPORTLIST& list) {
    std::vector<std::string> vanished;
    for (size_t k = 0; k < m_stDeviceTree.size(); ++k) {
        const _COMM_MGR_DEVICE_INFO_& known = m_stDeviceTree[k];
        const _OS_ADAPT_DEVICEPORTINFO* present = FindDevice(list, known.szDeviceName);
        if (present == nullptr) {
            vanished.emplace_back(known.szDeviceName);
        } else if (static_cast<int64_t>(known.vecPorts.size()) != present->nPortCount) {
            RemovePortsMissingFrom(*present, k);
        }
    }
    return vanished;
}

// A removal that empties the device moves the next one to its place; the walk goes on with that
// one, against the same entry. Whether to close is asked of the tree's copy of the port, which
// never shows a handle: a port lost by a device that stays is removed without being closed.
void CKOVASMgrPort::RemovePortsMissingFrom(const _OS_ADAPT_DEVICEPORTINFO& present, size_t k) {
    size_t p = 0;
    while (k < m_stDeviceTree.size() && p < m_stDeviceTree[k].vecPorts.size()) {
        const _PORT_& port = m_stDeviceTree[k].vecPorts[p];
        if (HasPort(present, port)) {
            ++p;
            continue;
        }
        const int portID = port.nPortID;
        if (port.hPort != OS_ADAPT_NO_HANDLE) {
            CloseByID(portID);
        }
        DeletePreparedPortAt(portID);
        p = 0;
    }
}

void CKOVASMgrPort::ReleaseDevicePorts(const char* deviceName) {
    JMutexGuard lock(m_PortMutex);
    if (deviceName == nullptr) {
        return;
    }
    for (size_t i = 0; i < m_stPreparedPorts.size();) {
        const _PORT_& port = m_stPreparedPorts[i];
        if (std::strcmp(deviceName, port.strDeviceName.c_str()) != 0) {
            ++i;
            continue;
        }
        const int portID = port.nPortID;
        if (port.hPort != OS_ADAPT_NO_HANDLE) {
            CloseByID(portID);
        }
        DeletePreparedPortAt(portID);
        i = 0;
    }
}

void CKOVASMgrPort::DeletePreparedPortAt(int portId) {
    JMutexGuard lock(m_PortMutex);
    for (const std::string& portName : DeleteFromTree(portId, m_stDeviceTree)) {
        std::printf("Delete %s port in m_stDeviceTree.\n", portName.c_str());
    }
    DeleteFromPorts(portId, m_stPreparedPorts);
}

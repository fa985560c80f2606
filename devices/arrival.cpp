// SPDX-License-Identifier: MIT
#include "KOVASMgrLog.h"
#include "common/jmutex_guard.h"
#include "devices/enumeration_entry.h"
#include "devices/lookup.h"
#include "devices/port_book.h"
#include "manager/osadapt_binding.h"
#include "manager/port_manager.h"

namespace {

// A port's name is logged as a format string without arguments, so "%%" stands for one per-cent
// sign. There being no arguments, every other conversion stays as it is written.
std::string FormattedWithoutArguments(const std::string& format) {
    std::string text;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format.compare(i, 2, "%%") == 0) {
            ++i;
        }
        text += format[i];
    }
    return text;
}

} // namespace

void CKOVASMgrPort::DetermineAddPort() {
    INFO_LOG("Enter DetermineAddPort()");
    JMutexGuard lock(m_PortMutex);
    if (!CanEnumerate()) {
        return;
    }
    _OS_ADAPT_DEVICEPORTLIST list = {};
    if (pfnEnumPortInfo(OS_ADAPT_ENUM_ALL, &list) == OS_ADAPT_OK) {
        AddNewPorts(list);
    }
    INFO_LOG("Leave DetermineAddPort()");
}

// An abandoned manager's rescan may get the lock long after; the adapter is another manager's then.
// And the functions of an adapter that was unloaded are still in the table.
bool CKOVASMgrPort::CanEnumerate() const {
    if (m_bAbandoned) {
        return false;
    }
    if (m_pOSAdaptLib == nullptr || !AllResolved()) {
        INFO_LOG("Getting interface of %s failed.", "OS_ADAPT_EnumDevicePortInfo");
        return false;
    }
    return true;
}

void CKOVASMgrPort::AddNewPorts(const _OS_ADAPT_DEVICEPORTLIST& list) {
    INFO_LOG("DetermineAddPort() Enum Device Count=%d !", list.nDeviceCount);
    for (int d = 0; d < BoundedDeviceCount(list); ++d) {
        const _OS_ADAPT_DEVICEPORTINFO& device = list.stDevice[d];
        INFO_LOG("DetermineAddPort() Port of Device Count=%d !", device.nPortCount);
        for (int p = 0; p < BoundedPortCount(device); ++p) {
            AddIfNew(device, device.stPort[p]);
        }
    }
}

void CKOVASMgrPort::AddIfNew(const _OS_ADAPT_DEVICEPORTINFO& device,
                             const _OS_ADAPT_PORTINFO& port) {
    _PORT_ added;
    added.strPortName = BoundedText(port.szPortName);
    added.strDeviceName = BoundedText(device.szDeviceName);
    added.strDeviceText = BoundedText(device.szDeviceText);
    INFO_LOG("%s", FormattedWithoutArguments(added.strPortName).c_str());
    if (FindPortByName(m_stPreparedPorts, added.strPortName.c_str()) != m_stPreparedPorts.end()) {
        return;
    }
    added.nPortID = port.nPortID != 0 ? port.nPortID : NextPortID(m_stPreparedPorts, m_nLastPortID);
    AddPort(added, m_stPreparedPorts, m_stDeviceTree);
}

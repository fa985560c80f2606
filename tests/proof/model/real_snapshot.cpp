// SPDX-License-Identifier: MIT
#include <algorithm>
#include <iterator>

#include "api/state.h"
#include "tests/harness/manager_probe.h"
#include "tests/proof/model/host_callbacks.h"
#include "tests/proof/model/real_manager.h"

namespace model {
namespace {

// Behind its text an array is zero to its end.
template <std::size_t size> std::string WholeText(const char (&array)[size]) {
    const char* const end = std::find(array, array + size, '\0');
    const bool isClean =
        end != array + size && std::all_of(end, array + size, [](char c) { return c == '\0'; });
    return std::string(array, end) + (isClean ? "" : " and what is not zero behind it");
}

Port Copy(const _PORT_& port) {
    return {port.nPortID,       port.nPortType, port.strPortName,
            port.strDeviceName, port.hPort,     NumbersOf(port.vecReadCallbacks),
            port.strDeviceText};
}

template <typename Ports> std::vector<Port> Copies(const Ports& ports) {
    std::vector<Port> copies;
    std::transform(ports.begin(), ports.end(), std::back_inserter(copies), Copy);
    return copies;
}

} // namespace

State RealManager::Snapshot() {
    State state;
    if (g_pMgrPort == nullptr) {
        return state;
    }
    JMutexGuard lock(ManagerProbe::PortMutex(*g_pMgrPort));
    state.exists = true;
    state.isInit = ManagerProbe::IsInit(*g_pMgrPort) != 0;
    state.isRunning = ManagerProbe::ReadThreadRun(*g_pMgrPort) != 0;
    state.lastID = ManagerProbe::LastPortID(*g_pMgrPort);
    state.ports = Copies(ManagerProbe::PreparedPorts(*g_pMgrPort));
    for (const _COMM_MGR_DEVICE_INFO_& device : ManagerProbe::DeviceTree(*g_pMgrPort)) {
        state.devices.push_back({WholeText(device.szDeviceName), Copies(device.vecPorts),
                                 WholeText(device.szDeviceText)});
    }
    state.stateCallbacks = NumbersOf(ManagerProbe::DevStateCallbacks(*g_pMgrPort));
    return state;
}

} // namespace model

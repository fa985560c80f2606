// SPDX-License-Identifier: MIT
#include <cstdio>

#include "common/jmutex_guard.h"
#include "manager/callback_scope.h"
#include "manager/notification_gate.h"
#include "manager/port_manager.h"

namespace {

// Any status passes, also one that no enumerator names.
_KOVAMGR_DEV_STATE_TYPE_ HostState(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    const uint32_t offset = static_cast<uint32_t>(KOVAMGR_DEVICE_INSERT) - OS_ADAPT_DEVICE_INSERT;
    return static_cast<_KOVAMGR_DEV_STATE_TYPE_>(
        static_cast<int32_t>(static_cast<uint32_t>(status) + offset));
}

} // namespace

int CKOVASMgrPort::ProcessDeviceState(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    const NotificationGate::Stay stay(NotificationGate::Get());
    CKOVASMgrPort* const manager = stay.Manager();
    if (manager == nullptr) {
        return -1;
    }
    const CallbackScope scope;
    if (status == OS_ADAPT_DEVICE_INSERT) {
        std::puts("----OS_ADAPT_DEVICE_INSERT-------");
        manager->DetermineAddPort();
    } else if (status == OS_ADAPT_DEVICE_PULLOUT) {
        std::puts("----OS_ADAPT_DEVICE_PULLOUT-------");
        manager->DetermineSubtractPort();
    }
    manager->TellDevStateCallbacks(status);
    return 0;
}

// A notification that was stuck in a manager when it was abandoned has nobody left to tell.
void CKOVASMgrPort::TellDevStateCallbacks(_OS_ADAPT_DEVICESTATUS_TYPE status) {
    JMutexGuard lock(m_DevStateCallbackMutex);
    for (size_t i = 0; i < m_vecDevStateCallbacks.size() && !m_bAbandoned; ++i) {
        const KOVAMGR_DEV_STATE_CALLBACK cb = m_vecDevStateCallbacks[i];
        if (cb != nullptr) {
            cb(HostState(status));
        }
    }
}

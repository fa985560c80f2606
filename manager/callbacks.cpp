// SPDX-License-Identifier: MIT
#include <algorithm>

#include "common/jmutex_guard.h"
#include "devices/lookup.h"
#include "manager/port_manager.h"

namespace {

template <typename Callback> void AddOnce(std::vector<Callback>& callbacks, Callback cb) {
    if (std::find(callbacks.begin(), callbacks.end(), cb) == callbacks.end()) {
        callbacks.push_back(cb);
    }
}

template <typename Callback> void Remove(std::vector<Callback>& callbacks, Callback cb) {
    const auto found = std::find(callbacks.begin(), callbacks.end(), cb);
    if (found != callbacks.end()) {
        callbacks.erase(found);
    }
}

} // namespace

int CKOVASMgrPort::FindForCallback(int portId, KOVAMGR_READ_CALLBACK cb, _PORT_*& port) {
    if (cb == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    if (m_bInit == 0) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    const auto found = FindPortByID(m_stPreparedPorts, portId);
    if (found == m_stPreparedPorts.end()) {
        return KOVAMGR_ERR_PARAM;
    }
    port = &*found;
    return KOVAMGR_OK;
}

int CKOVASMgrPort::RegisterReadCallBack(int portId, KOVAMGR_READ_CALLBACK cb) {
    JMutexGuard lock(m_PortMutex);
    _PORT_* port = nullptr;
    const int result = FindForCallback(portId, cb, port);
    if (result == KOVAMGR_OK) {
        AddOnce(port->vecReadCallbacks, cb);
    }
    return result;
}

int CKOVASMgrPort::UnregisterReadCallBack(int portId, KOVAMGR_READ_CALLBACK cb) {
    JMutexGuard lock(m_PortMutex);
    _PORT_* port = nullptr;
    const int result = FindForCallback(portId, cb, port);
    if (result == KOVAMGR_OK) {
        Remove(port->vecReadCallbacks, cb);
    }
    return result;
}

int CKOVASMgrPort::RegisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb) {
    JMutexGuard lock(m_DevStateCallbackMutex);
    if (cb == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    if (m_bInit == 0) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    AddOnce(m_vecDevStateCallbacks, cb);
    return KOVAMGR_OK;
}

int CKOVASMgrPort::UnregisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb) {
    JMutexGuard lock(m_DevStateCallbackMutex);
    if (cb == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    Remove(m_vecDevStateCallbacks, cb);
    return KOVAMGR_OK;
}

// SPDX-License-Identifier: MIT
#include <cstdint>

#include "KOVASMgrLog.h"
#include "common/jmutex_guard.h"
#include "devices/lookup.h"
#include "manager/osadapt_binding.h"
#include "manager/port_manager.h"

namespace {

long Fail(long* result, int code) {
    if (result != nullptr) {
        *result = code;
    }
    return -1;
}

} // namespace

int CKOVASMgrPort::Open(int nPortID) {
    JMutexGuard lock(m_PortMutex);
    if (!AllResolved()) {
        INFO_LOG("Can't load OSAdapt DLL for OS_ADAPT_OpenPort.");
        return KOVAMGR_ERR_OSADAPT;
    }
    if (m_bInit == 0) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    const auto port = FindPortByID(m_stPreparedPorts, nPortID);
    if (port == m_stPreparedPorts.end()) {
        return KOVAMGR_ERR_PARAM;
    }
    if (port->hPort == OS_ADAPT_NO_HANDLE &&
        pfnOpenPort(port->strPortName.c_str(), &port->hPort) != OS_ADAPT_OK) {
        INFO_LOG("Open port failed");
        return KOVAMGR_ERR_OSADAPT;
    }
    INFO_LOG("Open %s succeed.", port->strPortName.c_str());
    return KOVAMGR_OK;
}

int CKOVASMgrPort::Close(int nPortID) {
    JMutexGuard lock(m_PortMutex);
    if (m_bInit == 0) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    return CloseByID(nPortID);
}

// What Close does once it knows that the manager is initialised. A port that vanishes, or is open at
// the release, is closed all the same.
int CKOVASMgrPort::CloseByID(int nPortID) {
    if (!AllResolved()) {
        INFO_LOG("Can't load OSAdapt DLL for OS_ADAPT_ClosePort.");
        return KOVAMGR_ERR_OSADAPT;
    }
    const auto port = FindPortByID(m_stPreparedPorts, nPortID);
    return port == m_stPreparedPorts.end() ? KOVAMGR_OK : ClosePort(*port);
}

int CKOVASMgrPort::ClosePort(_PORT_& port) {
    if (!AllResolved()) {
        INFO_LOG("Can't load OSAdapt DLL for OS_ADAPT_ClosePort.");
        return KOVAMGR_ERR_OSADAPT;
    }
    if (port.hPort == OS_ADAPT_NO_HANDLE) {
        return KOVAMGR_OK;
    }
    if (pfnClosePort(port.hPort) != OS_ADAPT_OK) {
        INFO_LOG("Close port failed.");
        return KOVAMGR_ERR_OSADAPT;
    }
    INFO_LOG("Close port:%d succeeded.", port.nPortID);
    port.hPort = OS_ADAPT_NO_HANDLE;
    return KOVAMGR_OK;
}

long CKOVASMgrPort::Write(int nPortID, const void* data, long length, long /*extra*/,
                          _COMMAND_PRIORITY_TYPE_ /*priority*/, long* result) {
    JMutexGuard lock(m_PortMutex);
    if (m_bInit == 0) {
        return Fail(result, KOVAMGR_ERR_NOT_INIT);
    }
    if (!AllResolved()) {
        INFO_LOG("Can't load OSAdapt DLL for OS_ADAPT_Write.");
        return Fail(result, KOVAMGR_ERR_OSADAPT);
    }
    const auto port = FindPortByID(m_stPreparedPorts, nPortID);
    if (port == m_stPreparedPorts.end()) {
        INFO_LOG("LEAVE CKOVASMgrPort::Write. ON -1");
        return Fail(result, KOVAMGR_ERR_PARAM);
    }
    if (port->hPort == OS_ADAPT_NO_HANDLE) {
        return KOVAMGR_ERR_NO_HANDLE;
    }
    long count = 0;
    if (pfnWrite(port->hPort, data, length, &count) != OS_ADAPT_OK) {
        INFO_LOG("Write failed.\n");
        return Fail(result, KOVAMGR_ERR_OSADAPT);
    }
    return count;
}

long CKOVASMgrPort::Read(void* hPort, void* buffer, long size, long* result) {
    JMutexGuard lock(m_PortMutex);
    if (m_bInit == 0) {
        return Fail(result, KOVAMGR_ERR_NOT_INIT);
    }
    if (!AllResolved()) {
        INFO_LOG("Can't load OSAdapt DLL for OS_ADAPT_Read.");
        return Fail(result, KOVAMGR_ERR_OSADAPT);
    }
    const auto handle = static_cast<int32_t>(reinterpret_cast<intptr_t>(hPort));
    if (handle == OS_ADAPT_NO_HANDLE) {
        return -1;
    }
    long count = 0;
    if (pfnRead(handle, buffer, size, &count) != OS_ADAPT_OK) {
        INFO_LOG("Read failed.\n");
        return Fail(result, KOVAMGR_ERR_OSADAPT);
    }
    return count;
}

int CKOVASMgrPort::GetPortState(int /*nPortID*/) {
    JMutexGuard lock(m_PortMutex);
    return m_bInit != 0 ? KOVAMGR_PORT_STATE_READY : KOVAMGR_PORT_STATE_NOT_READY;
}

// SPDX-License-Identifier: MIT
#include "KOVASMgr.h"
#include "api/state.h"

int KOVAMGR_Open(int port) {
    if (port < 0) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT : g_pMgrPort->Open(port);
}

int KOVAMGR_Close(int port) {
    if (port < 0) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT : g_pMgrPort->Close(port);
}

int KOVAMGR_GetPortState(int port) {
    if (port < 0) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT : g_pMgrPort->GetPortState(port);
}

int KOVAMGR_Write(int port, const void* data, long length, long extra, long* result) {
    if (data == nullptr || port < 0 || length <= 0) {
        return KOVAMGR_ERR_PARAM;
    }
    if (g_pMgrPort == nullptr) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    return static_cast<int>(
        g_pMgrPort->Write(port, data, length, extra, KOVAMGR_COMMAND_PRIORITY_NORMAL, result));
}

int KOVAMGR_EnumeratePortInfo(_KOVAMGR_DEVICEINFOLIST* list) {
    if (list == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT : g_pMgrPort->EnumeratePortInfo(list);
}

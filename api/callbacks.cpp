// SPDX-License-Identifier: MIT
#include "KOVASMgr.h"
#include "api/state.h"

// Here the callback comes first and the port second, in the manager's functions the other way
// round.

int KOVAMGR_RegisterCommDataReadCallback(KOVAMGR_READ_CALLBACK cb, int port) {
    if (cb == nullptr || port < 0) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT
                                 : g_pMgrPort->RegisterReadCallBack(port, cb);
}

int KOVAMGR_UnRegisterCommDataReadCallback(KOVAMGR_READ_CALLBACK cb, int port) {
    if (cb == nullptr || port < 0) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT
                                 : g_pMgrPort->UnregisterReadCallBack(port, cb);
}

int KOVAMGR_RegisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb) {
    if (cb == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT
                                 : g_pMgrPort->RegisterDeviceStateProcessCallback(cb);
}

int KOVAMGR_UnRegisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb) {
    if (cb == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    return g_pMgrPort == nullptr ? KOVAMGR_ERR_NOT_INIT
                                 : g_pMgrPort->UnregisterDeviceStateProcessCallback(cb);
}

// SPDX-License-Identifier: MIT
#include <cxxabi.h>

#include <new>
#include <string>

#include "KOVASMgr.h"
#include "KOVASMgrLog.h"
#include "api/state.h"
#include "common/cancel_shield.h"
#include "common/jdir.h"
#include "manager/callback_scope.h"

CKOVASMgrPort* g_pMgrPort = nullptr;

namespace {

void DropManager() {
    CKOVASMgrPort::ReleaseInstance();
    g_pMgrPort = nullptr;
}

int StartManager() {
    if (CallbackScope::IsActive()) {
        ERRO_LOG("KOVAMGR_Init makes no manager when it is called from a callback.");
        return KOVAMGR_ERR_OSADAPT; // a callback of a manager that was left alone
    }
    try {
        g_pMgrPort = CKOVASMgrPort::GetInstance();
        if (g_pMgrPort->Init() == KOVAMGR_OK) {
            return KOVAMGR_OK;
        }
    } catch (abi::__forced_unwind&) {
        throw; // thread cancellation must pass
    } catch (...) {
        // Out of memory, or an adapter that throws: the same to the host as any other failure.
    }
    DropManager();
    return KOVAMGR_ERR_OSADAPT;
}

int InitIn(const char* logDir) {
    const JDir directory{std::string(logDir)};
    if (!directory.exists()) {
        return KOVAMGR_ERR_PARAM;
    }
    if (KOVASMGR_LOG_INIT(logDir) == 0) {
        return KOVAMGR_ERR_OSADAPT;
    }
    return g_pMgrPort != nullptr ? KOVAMGR_OK : StartManager();
}

} // namespace

int KOVAMGR_Init(const char* logDir) {
    if (logDir == nullptr || logDir[0] == '\0') {
        return KOVAMGR_ERR_PARAM;
    }
    CancelShield shield;
    try {
        return InitIn(logDir);
    } catch (const std::bad_alloc&) {
        return KOVAMGR_ERR_OSADAPT; // before any manager was made
    }
}

int KOVAMGR_Release(void) {
    CancelShield shield;
    if (CallbackScope::IsActive()) {
        ERRO_LOG("KOVAMGR_Release does nothing when it is called from a callback.");
        return KOVAMGR_OK;
    }
    if (g_pMgrPort != nullptr) {
        DropManager();
    }
    return KOVAMGR_OK;
}

// SPDX-License-Identifier: MIT
#include "tests/proof/model/model.h"

namespace model {

// The directory comes first; then a manager that is there already is left as it is.
int Model::Init(const Operation& operation) {
    if (operation.isNull || operation.text != kLogDirectory) {
        return KOVAMGR_ERR_PARAM;
    }
    if (m_State.exists) {
        return KOVAMGR_OK;
    }
    m_State = State();
    m_State.exists = true;
    m_State.isInit = true;
    Arrival();
    m_State.isRunning = true;
    m_Length = 0;
    if (m_Start == Start::kFull && Adapter().Register() != OS_ADAPT_OK) {
        ReleaseManager();
        return KOVAMGR_ERR_OSADAPT;
    }
    return KOVAMGR_OK;
}

int Model::Release() {
    if (m_Notices > 0) {
        LogError("KOVAMGR_Release does nothing when it is called from a callback.");
        Count(Quirk::kReleaseFromCallback);
        return KOVAMGR_OK;
    }
    if (m_State.exists) {
        ReleaseManager();
    }
    return KOVAMGR_OK;
}

void Model::ReleaseManager() {
    Log("ENTER CKOVASMgrPort::Release()");
    if (m_State.isInit) {
        CloseAll();
        if (Adapter().IsComplete()) {
            Adapter().UnRegister();
        } else {
            Log("Getting interface of OSADapt.dll failed.");
        }
        Log("LEAVE CKOVASMgrPort::Release()");
    }
    m_State = State();
}

// Each open port once, in the order of the list, also when one cannot be closed.
void Model::CloseAll() {
    for (Port& port : m_State.ports) {
        if (port.handle != -1) {
            Close(port);
        }
    }
}

} // namespace model

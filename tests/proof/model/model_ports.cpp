// SPDX-License-Identifier: MIT
#include "tests/proof/model/model.h"

namespace model {

// The first of this number.
Port* Model::FindPort(int id) {
    for (Port& port : m_State.ports) {
        if (port.id == id) {
            return &port;
        }
    }
    return nullptr;
}

// The adapter is asked for first, initialisation second: here only.
int Model::Open(int id) {
    if (!Adapter().IsComplete()) {
        Log("Can't load OSAdapt DLL for OS_ADAPT_OpenPort.");
        return KOVAMGR_ERR_OSADAPT;
    }
    if (!m_State.isInit) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    Port* const port = FindPort(id);
    if (port == nullptr) {
        return KOVAMGR_ERR_PARAM;
    }
    if (port->handle == -1 && Adapter().Open(port->name.c_str(), &port->handle) != OS_ADAPT_OK) {
        CountIf(port->handle != -1, Quirk::kFailedOpenLeftHandle);
        Log("Open port failed");
        return KOVAMGR_ERR_OSADAPT;
    }
    CountIf(port->handle == -1, Quirk::kOpenedWithoutHandle);
    Log("Open " + port->name + " succeed.");
    return KOVAMGR_OK;
}

// A number that no port has is success.
int Model::Close(int id) {
    if (!m_State.isInit) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    return CloseAnyTime(id);
}

// How ports that vanish are closed: also when a release has cleared the flag already.
int Model::CloseAnyTime(int id) {
    if (!Adapter().IsComplete()) {
        Log("Can't load OSAdapt DLL for OS_ADAPT_ClosePort.");
        return KOVAMGR_ERR_OSADAPT;
    }
    Port* const port = FindPort(id);
    return port == nullptr || port->handle == -1 ? KOVAMGR_OK : Close(*port);
}

int Model::Close(Port& port) {
    if (!Adapter().IsComplete()) {
        Log("Can't load OSAdapt DLL for OS_ADAPT_ClosePort.");
        return KOVAMGR_ERR_OSADAPT;
    }
    if (Adapter().Close(port.handle) != OS_ADAPT_OK) {
        Count(Quirk::kCloseFailed);
        Log("Close port failed.");
        return KOVAMGR_ERR_OSADAPT;
    }
    Log("Close port:" + std::to_string(port.id) + " succeeded.");
    port.handle = -1;
    return KOVAMGR_OK;
}

// The checks of the exported function give their codes in place of a count; whatever comes later
// is a count, or -1 with its reason stored, if there is a place for it.
Outcome Model::Write(const Operation& operation) {
    const long length = operation.length.value_or(static_cast<long>(operation.text.size()));
    if (operation.isNull || operation.number < 0 || length <= 0) {
        return {KOVAMGR_ERR_PARAM};
    }
    if (!m_State.exists) {
        return {KOVAMGR_ERR_NOT_INIT};
    }
    Outcome outcome = WriteChecked(operation, length);
    if (operation.isResultNull) {
        outcome.stored = Outcome::kUntouched;
    }
    return outcome;
}

Outcome Model::WriteChecked(const Operation& operation, long length) {
    if (!m_State.isInit) {
        return {-1, KOVAMGR_ERR_NOT_INIT};
    }
    if (!Adapter().IsComplete()) {
        Log("Can't load OSAdapt DLL for OS_ADAPT_Write.");
        return {-1, KOVAMGR_ERR_OSADAPT};
    }
    Port* const port = FindPort(operation.number);
    if (port == nullptr) {
        Log("LEAVE CKOVASMgrPort::Write. ON -1");
        return {-1, KOVAMGR_ERR_PARAM};
    }
    if (port->handle == -1) {
        return {KOVAMGR_ERR_NO_HANDLE}; // as if it were a count, and nothing is stored
    }
    long count = 0;
    if (Adapter().Write(port->handle, operation.text.data(), length, &count) != OS_ADAPT_OK) {
        Log("Write failed.\n");
        return {-1, KOVAMGR_ERR_OSADAPT};
    }
    return {static_cast<int>(count)};
}

// A handle of the adapter, which no port needs to have.
Outcome Model::ReadHandle(int handle) {
    std::string data(kReadHandleSize, '\0');
    if (!m_State.isInit) {
        return {-1, KOVAMGR_ERR_NOT_INIT, data};
    }
    if (!Adapter().IsComplete()) {
        Log("Can't load OSAdapt DLL for OS_ADAPT_Read.");
        return {-1, KOVAMGR_ERR_OSADAPT, data};
    }
    if (handle == -1) {
        return {-1, Outcome::kUntouched, data};
    }
    long count = 0;
    if (Adapter().Read(handle, &data[0], kReadHandleSize, &count) != OS_ADAPT_OK) {
        Log("Read failed.\n");
        return {-1, KOVAMGR_ERR_OSADAPT, data};
    }
    return {count, Outcome::kUntouched, data};
}

} // namespace model

// SPDX-License-Identifier: MIT
#include "tests/proof/model/real_manager.h"

#include <cstdint>
#include <stdexcept>
#include <utility>

#include "KOVASMgrLog.h"
#include "api/state.h"
#include "tests/harness/manager_probe.h"
#include "tests/proof/model/binding.h"
#include "tests/proof/model/host_callbacks.h"

namespace model {
namespace {

constexpr std::size_t kBufferSize = 4097;

const char* OrNull(const Operation& operation) {
    return operation.isNull ? nullptr : operation.text.c_str();
}

} // namespace

RealManager::RealManager(std::string logDirectory, TraceFile& trace)
    : m_LogDirectory(std::move(logDirectory)), m_Log(m_LogDirectory + "/KOVASMgr.log"),
      m_Trace(trace), m_Buffer(kBufferSize) {
    if (KOVASMGR_LOG_INIT(m_LogDirectory.c_str()) == 0) {
        throw std::runtime_error("the log cannot be opened");
    }
    SetCalled(this);
    Bind(kFunctions);
    m_Trace.Take();
}

RealManager::~RealManager() {
    KOVAMGR_Release();
    SetCalled(nullptr);
}

void RealManager::Scripted() { Bind(Adapter().Missing()); }

Outcome RealManager::Call(const Operation& operation) {
    const int port = operation.number;
    switch (operation.kind) {
    case Kind::kInit:
        return {operation.text == kLogDirectory ? Init() : KOVAMGR_Init(OrNull(operation))};
    case Kind::kRelease:
        return {KOVAMGR_Release()};
    case Kind::kOpen:
        return {KOVAMGR_Open(port)};
    case Kind::kClose:
        return {KOVAMGR_Close(port)};
    case Kind::kWrite:
        return Write(operation);
    case Kind::kPortState:
        return {KOVAMGR_GetPortState(port)};
    case Kind::kEnumerate:
        SoilRecord();
        return {KOVAMGR_EnumeratePortInfo(operation.isNull ? nullptr : &Record())};
    case Kind::kAddRead:
        return {KOVAMGR_RegisterCommDataReadCallback(ReadCallback(operation.callback), port)};
    case Kind::kRemoveRead:
        return {KOVAMGR_UnRegisterCommDataReadCallback(ReadCallback(operation.callback), port)};
    case Kind::kAddState:
        return {KOVAMGR_RegisterDeviceStateProcessCallback(StateCallback(operation.callback))};
    case Kind::kRemoveState:
        return {KOVAMGR_UnRegisterDeviceStateProcessCallback(StateCallback(operation.callback))};
    case Kind::kNotice:
        return {Notice(operation.number)};
    default:
        return g_pMgrPort != nullptr ? CallInside(operation) : Outcome();
    }
}

// What no exported function does.
Outcome RealManager::CallInside(const Operation& operation) {
    switch (operation.kind) {
    case Kind::kSweep:
        Sweep();
        return {};
    case Kind::kReadHandle:
        return ReadHandle(operation.number);
    case Kind::kReleaseDevice:
        g_pMgrPort->ReleaseDevicePorts(OrNull(operation));
        return {};
    case Kind::kDeletePort:
        g_pMgrPort->DeletePreparedPortAt(operation.number);
        return {};
    case Kind::kSetInit:
        ManagerProbe::IsInit(*g_pMgrPort) = operation.number;
        return {};
    case Kind::kSetRun:
        ManagerProbe::ReadThreadRun(*g_pMgrPort) = operation.number;
        return {};
    default:
        return {};
    }
}

// The first one is made by hand, up to where the thread would start.
int RealManager::Init() {
    if (g_pMgrPort != nullptr) {
        return KOVAMGR_Init(m_LogDirectory.c_str());
    }
    g_pMgrPort = CKOVASMgrPort::GetInstance();
    ManagerProbe::OSAdaptLib(*g_pMgrPort) = new JLibrary("/nowhere/OSAdapt"); // the manager's own
    ManagerProbe::IsInit(*g_pMgrPort) = 1;
    g_pMgrPort->DetermineAddPort();
    ManagerProbe::ReadThreadRun(*g_pMgrPort) = 1;
    m_Length = 0;
    return KOVAMGR_OK;
}

int RealManager::Notice(int status) {
    return CKOVASMgrPort::ProcessDeviceState(static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(status));
}

void RealManager::Sweep() { ManagerProbe::SweepPorts(*g_pMgrPort, m_Buffer.data(), m_Length); }

Outcome RealManager::Write(const Operation& operation) {
    Outcome outcome;
    const long length = operation.length.value_or(static_cast<long>(operation.text.size()));
    const void* const data = operation.isNull ? nullptr : operation.text.data();
    long* const result = operation.isResultNull ? nullptr : &outcome.stored;
    outcome.result = KOVAMGR_Write(operation.number, data, length, operation.times, result);
    return outcome;
}

Outcome RealManager::ReadHandle(int handle) {
    std::string data(kReadHandleSize, '\0');
    Outcome outcome;
    outcome.result = g_pMgrPort->Read(reinterpret_cast<void*>(static_cast<std::intptr_t>(handle)),
                                      &data[0], kReadHandleSize, &outcome.stored);
    outcome.data = data;
    return outcome;
}

} // namespace model

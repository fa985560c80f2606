// SPDX-License-Identifier: MIT
#include <cxxabi.h>

#include "KOVASMgrLog.h"
#include "common/jmutex_guard.h"
#include "manager/notification_gate.h"
#include "manager/osadapt_binding.h"
#include "manager/port_manager.h"

namespace {

// The adapter calls a function that returns nothing, ours returns an int that is then ignored: the
// calling convention allows it. By way of void (*)(), which tells the compiler that it is meant.
OS_ADAPT_STATUS_CALLBACK NotificationEntry() {
    return reinterpret_cast<OS_ADAPT_STATUS_CALLBACK>(
        reinterpret_cast<void (*)()>(&CKOVASMgrPort::ProcessDeviceState));
}

// While everything ends, an adapter that throws has merely failed, and the next step follows.
template <typename Call> void EvenIfItThrows(Call call) {
    try {
        call();
    } catch (abi::__forced_unwind&) {
        throw; // thread cancellation must pass
    } catch (...) {
        ERRO_LOG("The adapter threw an exception while the manager was released.");
    }
}

} // namespace

CKOVASMgrPort::CKOVASMgrPort()
    : m_bReadThreadRun(0), m_bInit(0), m_nLastPortID(0), m_pOSAdaptLib(nullptr),
      m_bAbandoned(false) {
    m_PortMutex.Init();
    m_DevStateCallbackMutex.Init();
    m_CallbackClearMutex.Init();
}

CKOVASMgrPort::~CKOVASMgrPort() {
    NotificationGate::Get().Close(this);
    if (m_pOSAdaptLib == nullptr) {
        return;
    }
    try {
        m_pOSAdaptLib->unload();
        delete m_pOSAdaptLib; // GCOVR_EXCL_BR_LINE: asks for null once more
        m_pOSAdaptLib = nullptr;
    } catch (...) {
        INFO_LOG("Free OSAdapte.dll fail");
    }
}

int CKOVASMgrPort::Init() {
    JMutexGuard lock(m_PortMutex);
    if (!LoadDll()) {
        INFO_LOG("Load OSAdapte.dll fail");
        return KOVAMGR_ERR_OSADAPT;
    }
    if (m_bInit != 0) {
        return KOVAMGR_OK;
    }
    m_bInit = 1;
    NotificationGate::Get().Open(this); // a released manager has closed it
    DetermineAddPort();
    m_bReadThreadRun = 1;
    if (!m_ReadThread.IsRunning()) {
        m_ReadThread.SetTask(this, &CKOVASMgrPort::ReadThread);
        if (m_ReadThread.Start() != 0) {
            m_bReadThreadRun = 0;
            return KOVAMGR_ERR_THREAD;
        }
    }
    return RegisterForNotifications();
}

int CKOVASMgrPort::RegisterForNotifications() {
    // GCOVR_EXCL_BR_START: a library without the operation has not been loaded
    if (pfnRegDevStateProc != nullptr && pfnRegDevStateProc(NotificationEntry()) != OS_ADAPT_OK) {
        return KOVAMGR_ERR_OSADAPT;
    }
    // GCOVR_EXCL_BR_STOP
    return KOVAMGR_OK;
}

int CKOVASMgrPort::Release() {
    INFO_LOG("ENTER CKOVASMgrPort::Release()");
    if (m_bInit == 0) {
        return KOVAMGR_ERR_NOT_INIT;
    }
    m_bReadThreadRun = 0;
    m_bInit = 0;
    if (!StopReadThread()) {
        Abandon();
        return KOVAMGR_OK;
    }
    {
        JMutexGuard lock(m_PortMutex);
        CloseAllPorts();
        EmptyLists();
    }
    UnregisterFromNotifications();
    // A notification that came between the two steps above has filled the lists again.
    NotificationGate::Get().Close(this);
    {
        JMutexGuard lock(m_PortMutex);
        EmptyLists();
    }
    EmptyDevStateCallbacks();
    INFO_LOG("LEAVE CKOVASMgrPort::Release()");
    return KOVAMGR_OK;
}

bool CKOVASMgrPort::StopReadThread() {
    if (!m_ReadThread.IsRunning()) {
        return true;
    }
    INFO_LOG("Begin m_ReadThread.EndThread()");
    const bool hasEnded = m_ReadThread.Stop();
    INFO_LOG("End m_ReadThread.EndThread()");
    return hasEnded;
}

// By index: a failing close leaves its handle, and must not be tried again for ever.
void CKOVASMgrPort::CloseAllPorts() {
    for (size_t i = 0; i < m_stPreparedPorts.size(); ++i) {
        if (m_stPreparedPorts[i].hPort != OS_ADAPT_NO_HANDLE) {
            EvenIfItThrows(
                [&]() KOVASMGR_NO_THREAD_SAFETY_ANALYSIS { ClosePort(m_stPreparedPorts[i]); });
        }
    }
}

void CKOVASMgrPort::EmptyLists() {
    m_stPreparedPorts.clear();
    m_stDeviceTree.clear();
}

void CKOVASMgrPort::UnregisterFromNotifications() {
    if (!AllResolved()) {
        INFO_LOG("Getting interface of %s failed.", "OSADapt.dll");
        return;
    }
    EvenIfItThrows([] { pfnUnRegDevStateProc(NotificationEntry()); });
}

// Not under the lock of the callers and registrations: the gate is closed, nobody is calling.
void CKOVASMgrPort::EmptyDevStateCallbacks() KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
    JMutexGuard lock(m_CallbackClearMutex);
    m_vecDevStateCallbacks.clear();
}

// The thread may hold any lock, and stand in the adapter: nothing of either is touched any more.
void CKOVASMgrPort::Abandon() {
    m_bAbandoned = true;
    NotificationGate::Get().Abandon();
    ERRO_LOG("The read thread cannot be stopped; its ports stay open and it is left alone.");
}

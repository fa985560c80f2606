// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_MANAGER_PROBE_H
#define KOVASMGR_TESTS_HARNESS_MANAGER_PROBE_H

#include <vector>

#include "common/jmutex_guard.h"
#include "manager/port_manager.h"

/// What tests and benchmarks see and change inside a manager.
class ManagerProbe {
  public:
    // The lists themselves: for a manager that no other thread uses, or with its PortMutex held.
    static std::vector<_PORT_>&
    PreparedPorts(CKOVASMgrPort& manager) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
        return manager.m_stPreparedPorts;
    }
    static std::vector<_COMM_MGR_DEVICE_INFO_>&
    DeviceTree(CKOVASMgrPort& manager) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
        return manager.m_stDeviceTree;
    }
    static std::vector<KOVAMGR_DEV_STATE_CALLBACK>&
    DevStateCallbacks(CKOVASMgrPort& manager) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
        return manager.m_vecDevStateCallbacks;
    }
    static int& LastPortID(CKOVASMgrPort& manager) KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
        return manager.m_nLastPortID;
    }

    // Copies, for a manager at work.
    static std::vector<_PORT_> CopyOfPreparedPorts(CKOVASMgrPort& manager) {
        JMutexGuard lock(manager.m_PortMutex);
        return manager.m_stPreparedPorts;
    }
    static std::vector<_COMM_MGR_DEVICE_INFO_> CopyOfDeviceTree(CKOVASMgrPort& manager) {
        JMutexGuard lock(manager.m_PortMutex);
        return manager.m_stDeviceTree;
    }

    static JMutex& PortMutex(CKOVASMgrPort& manager) { return manager.m_PortMutex; }
    static JMutex& DevStateCallbackMutex(CKOVASMgrPort& manager) {
        return manager.m_DevStateCallbackMutex;
    }
    static JMutex& CallbackClearMutex(CKOVASMgrPort& manager) {
        return manager.m_CallbackClearMutex;
    }
    static JThread& ReadThreadObject(CKOVASMgrPort& manager) { return manager.m_ReadThread; }
    static std::atomic<int>& ReadThreadRun(CKOVASMgrPort& manager) {
        return manager.m_bReadThreadRun;
    }
    static std::atomic<int>& IsInit(CKOVASMgrPort& manager) { return manager.m_bInit; }
    static JLibrary*& OSAdaptLib(CKOVASMgrPort& manager) { return manager.m_pOSAdaptLib; }

    /// One sweep of the read thread; buffer has 4,097 bytes.
    static void SweepPorts(CKOVASMgrPort& manager, char* buffer, long& length) {
        JMutexGuard lock(manager.m_PortMutex);
        manager.SweepPorts(buffer, length);
    }
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_MANAGER_PORT_MANAGER_H
#define KOVASMGR_MANAGER_PORT_MANAGER_H

#include <atomic>
#include <vector>

#include "KOVASMgr.h"
#include "OSAdapt.h"
#include "common/jlibrary.h"
#include "common/jmutex.h"
#include "devices/records.h"
#include "manager/jthread_t.h"

/// The port manager: the one object of the process that owns the library's state.
///
/// Result codes are those of KOVASMgr.h, where the public functions of the same meaning are
/// described. Lock order: notification gate, m_DevStateCallbackMutex, m_PortMutex, the adapter's
/// locks, the log's lock; m_CallbackClearMutex alone.
class CKOVASMgrPort {
  public:
    CKOVASMgrPort();

    /// Unloads the adapter. Release comes first.
    ~CKOVASMgrPort();
    CKOVASMgrPort(const CKOVASMgrPort&) = delete;
    CKOVASMgrPort& operator=(const CKOVASMgrPort&) = delete;

    // --- life (singleton.cpp, lifecycle.cpp, osadapt_binding.cpp) ---

    /// The process's manager, made at the first call. Throws what construction throws.
    static CKOVASMgrPort* GetInstance();

    /// Releases and destroys the process's manager; nothing when there is none. A manager whose
    /// read thread could not be stopped is left alone instead of being destroyed.
    static void ReleaseInstance();

    /// Loads the adapter, scans for devices, starts the read thread, registers for notifications.
    /// The adapter is loaded anew on every call, also when already initialised.
    /// @return KOVAMGR_OK, KOVAMGR_ERR_OSADAPT or KOVAMGR_ERR_THREAD; the two failures after the
    ///         first scan leave the manager as far as it got, for Release to undo.
    int Init();

    /// Stops the read thread, closes all ports, forgets everything but the loaded adapter. An adapter
    /// that throws has failed, as one that returns a failure.
    /// @return KOVAMGR_OK, or KOVAMGR_ERR_NOT_INIT when there was nothing to release.
    int Release();

    /// Loads the adapter and fills the table of its operations.
    /// @return whether all seven were found; those that were found are stored in any case.
    bool LoadDll();

    // --- ports (port_io.cpp, enumeration.cpp) ---

    int Open(int nPortID);
    int Close(int nPortID);

    /// @return bytes written; -1 with the reason in *result (if result is not null); or
    ///         KOVAMGR_ERR_NO_HANDLE, with *result untouched, when the port is closed.
    long Write(int nPortID, const void* data, long length, long extra,
               _COMMAND_PRIORITY_TYPE_ priority, long* result);

    /// Reads from an adapter's handle, which is not looked up among the ports.
    /// @return bytes read; -1 with the reason in *result (untouched when the handle is -1).
    long Read(void* hPort, void* buffer, long size, long* result);

    /// @return KOVAMGR_PORT_STATE_READY or _NOT_READY, the same for every identifier.
    int GetPortState(int nPortID);

    int EnumeratePortInfo(_KOVAMGR_DEVICEINFOLIST* pList);

    // --- callbacks (callbacks.cpp) ---

    int RegisterReadCallBack(int portId, KOVAMGR_READ_CALLBACK cb);
    int UnregisterReadCallBack(int portId, KOVAMGR_READ_CALLBACK cb);
    int RegisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb);

    /// Works on an uninitialised manager, too.
    int UnregisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb);

    // --- devices coming and going (devices/) ---

    /// What the adapter notifies: rescans, then tells the device-state callbacks.
    /// @return 0, or -1 when there is no manager to tell.
    /// Threads: any, at any time.
    static int ProcessDeviceState(_OS_ADAPT_DEVICESTATUS_TYPE status);

    /// Adds every enumerated port whose name is not known. Never removes or renumbers one.
    void DetermineAddPort();

    /// Removes every port that is not enumerated any more.
    void DetermineSubtractPort();

    /// Closes and removes every prepared port of the device of this name; null does nothing.
    void ReleaseDevicePorts(const char* deviceName);

    /// Removes one port without closing it, and every device that has no ports.
    void DeletePreparedPortAt(int portId);

    /// The read thread's loop (read_thread.cpp): sweeps all open ports about every 10 ms.
    void ReadThread();

  private:
    friend class ManagerProbe; // how tests and benchmarks look inside

    int RegisterForNotifications();
    void UnregisterFromNotifications();
    bool StopReadThread();
    void CloseAllPorts() KOVASMGR_REQUIRES(m_PortMutex);
    void EmptyLists() KOVASMGR_REQUIRES(m_PortMutex);
    void EmptyDevStateCallbacks();
    void Abandon();

    int CloseByID(int nPortID) KOVASMGR_REQUIRES(m_PortMutex);
    int ClosePort(_PORT_& port) KOVASMGR_REQUIRES(m_PortMutex);
    bool CanEnumerate() const;
    void SweepPorts(char* buffer, long& length) KOVASMGR_REQUIRES(m_PortMutex);
    void DeliverData(size_t index, char* data, int length) KOVASMGR_REQUIRES(m_PortMutex);
    int FindForCallback(int portId, KOVAMGR_READ_CALLBACK cb, _PORT_*& port)
        KOVASMGR_REQUIRES(m_PortMutex);
    void TellDevStateCallbacks(_OS_ADAPT_DEVICESTATUS_TYPE status);

    void AddNewPorts(const _OS_ADAPT_DEVICEPORTLIST& list) KOVASMGR_REQUIRES(m_PortMutex);
    void AddIfNew(const _OS_ADAPT_DEVICEPORTINFO& device, const _OS_ADAPT_PORTINFO& port)
        KOVASMGR_REQUIRES(m_PortMutex);
    std::vector<std::string> RemoveVanishedPorts(const _OS_ADAPT_DEVICEPORTLIST& list)
        KOVASMGR_REQUIRES(m_PortMutex);
    void RemovePortsMissingFrom(const _OS_ADAPT_DEVICEPORTINFO& present, size_t k)
        KOVASMGR_REQUIRES(m_PortMutex);

    std::vector<KOVAMGR_DEV_STATE_CALLBACK>
        m_vecDevStateCallbacks KOVASMGR_GUARDED_BY(m_DevStateCallbackMutex);
    JMutex m_DevStateCallbackMutex; ///< registration and dispatch of device-state callbacks
    JMutex m_CallbackClearMutex;    ///< held by Release alone while it empties the list
    JThreadT<CKOVASMgrPort, void> m_ReadThread;
    JMutex m_PortMutex; ///< the main lock: held through Init, every port operation, every scan
    std::atomic<int> m_bReadThreadRun;
    std::vector<_PORT_> m_stPreparedPorts KOVASMGR_GUARDED_BY(m_PortMutex);
    std::atomic<int> m_bInit; ///< changed by Release without the lock
    std::vector<_COMM_MGR_DEVICE_INFO_> m_stDeviceTree KOVASMGR_GUARDED_BY(m_PortMutex);
    int m_nLastPortID KOVASMGR_GUARDED_BY(m_PortMutex);
    JLibrary* m_pOSAdaptLib; ///< owned; null when none

    std::atomic<bool> m_bAbandoned; ///< the read thread lives on: never lock, never destroy
    CKOVASMgrPort* m_pAbandonedBefore = nullptr;
};

#endif

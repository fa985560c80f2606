// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_VIRTUAL_ADAPTER_H
#define KOVASMGR_ADAPTERS_VIRTUAL_VIRTUAL_ADAPTER_H

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <mutex>

#include "OSAdapt.h"
#include "adapters/shared/handle_table.h"
#include "adapters/shared/state_notifier.h"
#include "adapters/virtual/session.h"

/// The seven functions' bodies and the one state behind them.
///
/// Threads: any. Lock order: session, ports, notifier, handles.
class VirtualAdapter {
  public:
    /// The one adapter. It is never destroyed: at the end of the process threads of the host may
    /// still be inside.
    static VirtualAdapter& Instance();

    int Register(OS_ADAPT_STATUS_CALLBACK callback);
    int UnRegister();
    int Open(const char* portName, int* handle);
    int Close(int handle);
    int Write(int handle, const void* data, long length, long* written);
    int Read(int handle, void* buffer, long size, long* read);
    int Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list);

    /// Reclaims everything when the library is unloaded or the process ends. Calls that come later
    /// find no ports.
    void Shutdown();

  private:
    VirtualAdapter();
    static void WakeSession(void* self);

    /// The session, started when there is none.
    /// @throws std::runtime_error with the reason
    std::shared_ptr<Session> UseSession();
    void EndSession();
    void Wake();

    HandleTable m_Handles;
    StateNotifier m_Notifier;
    std::mutex m_SessionMutex; // held while a session starts or ends
    std::shared_ptr<Session> m_Session;
    std::atomic<pid_t> m_Owner{0}; // the process that started a session; a forked child is another
    std::atomic<bool> m_Gone{false};
};

#endif

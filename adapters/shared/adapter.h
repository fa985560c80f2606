// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_ADAPTER_H
#define KOVASMGR_ADAPTERS_ADAPTER_H

#include <sys/types.h>

#include <atomic>
#include <memory>
#include <mutex>

#include "OSAdapt.h"
#include "adapters/shared/handle_table.h"
#include "adapters/shared/port_source.h"
#include "adapters/shared/state_notifier.h"

/// The seven functions' bodies and the one state behind them; what differs from adapter to adapter
/// is the source of the ports.
///
/// Threads: any. Lock order: this one, the source's, notifier, handles.
class Adapter {
  public:
    /// The one adapter. It is never destroyed: at the end of the process threads of the host may
    /// still be inside.
    static Adapter& Instance();

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

    /// The source of the ports, started when there is none.
    /// @throws std::runtime_error with the reason
    std::shared_ptr<PortSource> UseSource();

    HandleTable& Handles() { return m_Handles; }

  private:
    Adapter();
    static void WakeSource(void* self);

    void EndSource();
    void Wake();

    HandleTable m_Handles;
    StateNotifier m_Notifier;
    std::mutex m_SourceMutex; // held while a source starts or ends
    std::shared_ptr<PortSource> m_Source;
    std::atomic<pid_t> m_Owner{0}; // the process that started a source; a forked child is another
    std::atomic<bool> m_Gone{false};
};

#endif

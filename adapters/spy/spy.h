// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_SPY_H
#define KOVASMGR_ADAPTERS_SPY_SPY_H

#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <memory>

#include "OSAdapt.h"
#include "adapters/spy/call.h"
#include "adapters/spy/capture.h"
#include "adapters/spy/counters.h"
#include "adapters/spy/fault_plan.h"
#include "adapters/spy/port_book.h"
#include "adapters/spy/recording.h"
#include "adapters/spy/settings.h"
#include "adapters/spy/target.h"

/// Passes every call on to another adapter, and watches.
///
/// Threads: any. No lock is held while a call is passed on, nor while the host is told.
class Spy {
  public:
    /// The one spy, which loads the other adapter at the first call; null when that cannot be, which
    /// is one line in the log.
    static Spy* Get();

    /// The functions to call when nothing is watched, so that this costs next to nothing; null: ask
    /// Get.
    static const AdapterFunctions* Unwatched() {
        return s_Unwatched.load(std::memory_order_acquire);
    }

    /// At unloading: ends what is left of a registration, and everything.
    static void Unload();

    /// At the end of the process: threads of the host may still be inside, so that only files go.
    static void EndProcess();

    int Register(OS_ADAPT_STATUS_CALLBACK callback);
    int UnRegister(OS_ADAPT_STATUS_CALLBACK callback);
    int Open(const char* portName, int* handle);
    int Close(int handle);
    int Write(int handle, const void* data, long length, long* written);
    int Read(int handle, void* buffer, long size, long* read);
    int Enumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list);

    /// A function beyond the seven; null when the other adapter has none of this name.
    void* Find(const char* name) const { return m_Target.Find(name); }

  private:
    class Watched;
    static Spy* Make();
    static void OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE status);

    explicit Spy(const Settings& settings);
    ~Spy();
    Spy(const Spy&) = delete;
    Spy& operator=(const Spy&) = delete;

    template <typename PassOn> int Run(Call& call, PassOn passOn);
    void PassNotice(_OS_ADAPT_DEVICESTATUS_TYPE status);
    void StartCounting();
    void Note(const Call& call);
    void Rest();

    static std::atomic<const AdapterFunctions*> s_Unwatched;
    static std::atomic<Spy*> s_Spy;

    const pid_t m_Owner = getpid();
    FaultPlan m_Faults;
    Target m_Target;
    PortBook m_Ports;
    std::unique_ptr<Recording> m_Recording; // null: not wanted; as the others
    std::unique_ptr<Capture> m_Capture;
    std::unique_ptr<Counters> m_Counters;
    std::atomic<OS_ADAPT_STATUS_CALLBACK> m_Callback{nullptr}; // the host's
    std::atomic<bool> m_IsRegistered{false};
    std::atomic<bool> m_IsResting{false}; // un-registered: what comes late leaves no file open
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_DEVICE_WATCH_H
#define KOVASMGR_ADAPTERS_LINUX_DEVICE_WATCH_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "OSAdapt.h"
#include "adapters/linux/arrivals.h"
#include "adapters/linux/device_table.h"
#include "adapters/linux/event_monitor.h"
#include "adapters/linux/facts_reader.h"
#include "adapters/linux/udev_handles.h"
#include "adapters/shared/handle_table.h"
#include "adapters/shared/state_notifier.h"
#include "adapters/shared/unique_fd.h"
#include "adapters/shared/worker_thread.h"

/// Keeps the table of the ports that are present in step with the system, event by event, and
/// publishes the changes: what came or went together, together.
///
/// The kernel says first that a port comes or goes. A port that goes is taken out at once: what the
/// host holds open of it is dead, so that its node is free for what comes next. A port that comes
/// waits for udevd, where one runs: before that its group and mode are not set. Everybody's word is
/// weighed by the kernel's sequence number, because udevd speaks late.
///
/// Threads: any. Lock order: this one, the table of handles or the notifier.
class DeviceWatch {
  public:
    /// Looks at the system and listens to it from then on; nothing that happens in between is lost
    /// or told twice.
    /// @throws std::runtime_error with the reason
    DeviceWatch(HandleTable& handles, StateNotifier& notifier);

    ~DeviceWatch() { Stop(); }
    DeviceWatch(const DeviceWatch&) = delete;
    DeviceWatch& operator=(const DeviceWatch&) = delete;

    /// Ends the thread. By one thread, which is not the watch's own.
    void Stop();

    /// Compares the table with the system.
    /// @throws std::runtime_error with the reason; the table is unchanged
    void Refresh();

    /// A port that is present.
    std::optional<DeviceTable::Port> Find(const std::string& node);

    /// Enters a port that was opened after it was found.
    /// @return the handle
    /// @throws std::runtime_error when it has gone since, or another has come in its place
    int Enter(const DeviceTable::Port& port, HandleTable::Terminal terminal);

  private:
    using Instant = Arrivals::Instant;
    using Scan = std::vector<FactsRead>;

    // Events
    void OpenMonitors();
    void ListenToUdevd();
    std::unique_ptr<EventMonitor> OpenMonitor(EventMonitor::Source source);
    void FetchEvents(std::unique_ptr<EventMonitor>& monitor, bool isWord);
    void OnEvent(const DeviceEvent& event, bool isWord);
    void OnAnnounced(const DeviceEvent& event);
    void OnWord(const DeviceEvent& event);
    void OnRemoved(const DeviceEvent& event);
    void OnLost();

    // The table
    bool IsReplaced(const DeviceTable::Port& port) const;
    void Look(const std::string& sysPath, uint64_t sequence);
    void Settle();
    void Admit(const Arrivals::Port& port);
    void Leave(const std::string& sysPath);
    void Compare();
    Scan ScanSystem();
    void LeaveWhatIsGone(const Scan& scan);
    void EnterWhatIsNew(Scan& scan);
    void BeginChange(_OS_ADAPT_DEVICESTATUS_TYPE direction);
    void Publish();

    // The thread
    static void Enter(void* self);
    void Run();
    void ServeOnce();
    void Wait();
    int TimeToWait();
    void Wake();

    HandleTable& m_Handles;
    StateNotifier& m_Notifier;
    UniqueFd m_Wake; // an event counter
    std::atomic<bool> m_Stop{false};
    std::mutex m_Mutex; // guards everything below, libudev's objects included
    UdevContext m_Context;
    bool m_AwaitWord = false;               // udevd runs
    std::unique_ptr<EventMonitor> m_Kernel; // null: not to be had
    std::unique_ptr<EventMonitor> m_Udev;   // null: not to be had, or udevd does not run
    DeviceTable m_Table;
    Arrivals m_Arrivals;
    uint64_t m_Compared = 0; // the kernel's last event when the system was last looked at
    // What has changed in the table since it was published: arrivals or removals, never both.
    std::optional<_OS_ADAPT_DEVICESTATUS_TYPE> m_Unpublished;
    bool m_Lost = false;   // a comparison is due; set by the thread alone
    bool m_IsFresh = true; // nobody has asked yet for what the constructor found
    Instant m_Started;
    WorkerThread m_Thread;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_EVENT_MONITOR_H
#define KOVASMGR_ADAPTERS_LINUX_EVENT_MONITOR_H

#include <cstdint>
#include <string>

#include "adapters/linux/udev_handles.h"

/// Something happened to a device of subsystem tty.
struct DeviceEvent {
    enum class Action { Added, Removed, Other };
    Action action = Action::Other;
    std::string sysPath;
    uint64_t sequence = 0; // the kernel's number of the event; 0: none is known
};

/// Events of terminals as the kernel or udevd sends them. From udevd an event comes when its rules
/// have run: the node has its group and mode.
///
/// Threads: one at a time, the same for all that use the context.
class EventMonitor {
  public:
    enum class Source { Kernel, Udev };

    /// @throws std::runtime_error with the reason
    EventMonitor(udev* context, Source source);

    /// Readable when there may be events.
    int Descriptor() const { return udev_monitor_get_fd(m_Monitor.get()); }

    enum class Outcome {
        Event,
        Nothing,
        Lost,   // more came than was fetched in time: compare with the system
        Broken, // no more events will come from here
    };

    /// Fetches one event; never blocks.
    Outcome Receive(DeviceEvent& event);

  private:
    UdevMonitor m_Monitor;
};

#endif

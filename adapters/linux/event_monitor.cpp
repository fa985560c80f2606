// SPDX-License-Identifier: MIT
#include "adapters/linux/event_monitor.h"

#include <cerrno>
#include <stdexcept>

#include "adapters/shared/adapter_log.h"

namespace {

const char* NameOf(EventMonitor::Source source) {
    return source == EventMonitor::Source::Udev ? "udev" : "kernel";
}

DeviceEvent::Action ActionOf(udev_device* device) {
    const std::string action = UdevText(udev_device_get_action(device));
    if (action == "remove") {
        return DeviceEvent::Action::Removed;
    }
    return action == "add" ? DeviceEvent::Action::Added : DeviceEvent::Action::Other;
}

void Require(bool done, EventMonitor::Source source) {
    if (!done) {
        throw std::runtime_error(std::string("no device events from the source '") +
                                 NameOf(source) + "': " + ErrnoText(errno));
    }
}

} // namespace

EventMonitor::EventMonitor(udev* context, Source source)
    : m_Monitor(udev_monitor_new_from_netlink(context, NameOf(source))) {
    Require(m_Monitor != nullptr, source);
    Require(udev_monitor_filter_add_match_subsystem_devtype(m_Monitor.get(), "tty", nullptr) >= 0,
            source);
    Require(udev_monitor_enable_receiving(m_Monitor.get()) >= 0, source);
}

EventMonitor::Outcome EventMonitor::Receive(DeviceEvent& event) {
    errno = 0;
    const UdevDevice device(udev_monitor_receive_device(m_Monitor.get()));
    if (device != nullptr) {
        event = {ActionOf(device.get()), UdevText(udev_device_get_syspath(device.get())),
                 udev_device_get_seqnum(device.get())};
        return Outcome::Event;
    }
    switch (errno) {
    case 0:
    case EAGAIN: // also for events of other subsystems
    case EINTR:
        return Outcome::Nothing;
    case ENOBUFS:
        return Outcome::Lost;
    default:
        return Outcome::Broken;
    }
}

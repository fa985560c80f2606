// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_LINUX_PORTS_H
#define KOVASMGR_ADAPTERS_LINUX_LINUX_PORTS_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "adapters/linux/device_watch.h"
#include "adapters/linux/line_settings.h"
#include "adapters/shared/port_source.h"

/// The serial ports of the machine.
///
/// Threads: any. Lock order: this one, the watch's, the table of handles.
class LinuxPorts : public PortSource {
  public:
    LinuxPorts(HandleTable& handles, StateNotifier& notifier);

    int Open(const std::string& portName) override;
    void Refresh() override { m_Watch.Refresh(); }
    void Stop() override { m_Watch.Stop(); }

    /// What OSADAPT_SetLine does.
    /// @throws std::runtime_error with the reason; nothing has changed then
    void SetLine(const std::string& portName, const std::string& settings);

  private:
    // What a host has set, good for one arrival of the port.
    struct HostLine {
        uint64_t arrival = 0;
        LineChange change;
    };

    DeviceTable::Port Need(const std::string& portName);
    LineChange HostChange(const DeviceTable::Port& port) const;

    HandleTable& m_Handles;
    DeviceWatch m_Watch;
    std::mutex m_Mutex; // held while a line is opened or set, so that no opening misses a setting
    std::map<std::string, HostLine> m_HostLines; // by port name
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_DEVICE_TABLE_H
#define KOVASMGR_ADAPTERS_LINUX_DEVICE_TABLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "adapters/linux/port_facts.h"
#include "adapters/shared/port_table.h"

/// The ports that are present, grouped by the device they belong to.
///
/// A device is named when its first port comes and keeps its name until its last port has gone.
/// Devices stand in order of arrival, the ports of a device in the order of their interfaces. What
/// does not fit an enumeration waits until something that is reported goes.
///
/// Threads: none of its own and no lock; DeviceWatch guards it.
class DeviceTable {
  public:
    struct Port {
        PortFacts facts;
        uint64_t arrival = 0;  // of this port, a new number each time it comes
        uint64_t sequence = 0; // the kernel's number of the event it is known by; 0: unknown
        std::string deviceName;
        bool isReported = false;
    };

    /// Enters a port. Neither its path nor its node may be known.
    void Add(const PortFacts& facts, uint64_t sequence);

    /// @return false when it is not known
    bool Remove(const std::string& sysPath);

    /// The same port stands in another place of the device tree now, as rfcomm's do when they connect.
    void Move(const std::string& sysPath, const std::string& newSysPath);

    /// The pointers are good until the next change.
    const Port* Find(const std::string& sysPath) const;
    const Port* FindNode(const std::string& node) const;
    std::vector<Port> Ports() const;

    /// What an enumeration reports.
    PortTable Reported() const;

  private:
    struct Device {
        std::string path;
        std::string name;
        std::string text;
        bool isReported = false;
        std::vector<Port> ports;
    };

    Device& DeviceOf(const PortFacts& facts);
    std::string FreeName(const PortFacts& facts) const;
    bool IsTaken(const std::string& name) const;
    void ReportWhatFits();
    static void ReportPortsThatFit(Device& device);

    std::vector<Device> m_Devices;
};

/// The order of the devices that a scan finds, and of the ports of one device: bus, place, interface
/// and port, numbers in texts by their value.
bool StandsBefore(const PortFacts& left, const PortFacts& right);

#endif

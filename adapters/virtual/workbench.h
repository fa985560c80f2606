// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_WORKBENCH_H
#define KOVASMGR_ADAPTERS_VIRTUAL_WORKBENCH_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapters/shared/port_table.h"
#include "adapters/virtual/line.h"
#include "adapters/virtual/scenario.h"

/// The virtual devices of a scenario: which are plugged in, with which ports.
///
/// Threads: one at a time.
class Workbench {
  public:
    struct Port {
        const PortSpec* spec = nullptr;
        bool unplugged = false;     // taken off its device by itself
        uint64_t arrival = 0;       // of the present line
        std::unique_ptr<Line> line; // null: not there
    };

    struct Device {
        const DeviceSpec* spec = nullptr;
        bool present = false;
        std::string mode;
        std::vector<Port> ports;
    };

    /// Starts empty, or with a scenario's devices, none of them plugged in.
    Workbench() = default;
    explicit Workbench(std::unique_ptr<const Scenario> scenario);

    std::vector<Device>& Devices() { return m_Devices; }
    Device* FindDevice(const std::string& name);
    Port* FindPort(const std::string& name);
    Device* DeviceOf(const Port& port);

    /// Whether a port should be there, by its device's state.
    static bool BelongsHere(const Device& device, const Port& port);

    /// Gives every port of the device that should be there a line. When one cannot be made, those
    /// made before are taken back.
    /// @throws std::runtime_error with the reason
    void AddLines(Device& device);

    /// What is attached now.
    PortTable Table() const;

  private:
    std::unique_ptr<const Scenario> m_Scenario;
    std::vector<Device> m_Devices;
};

#endif

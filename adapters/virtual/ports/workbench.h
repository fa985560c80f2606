// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_WORKBENCH_H
#define KOVASMGR_ADAPTERS_VIRTUAL_WORKBENCH_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapters/shared/port_table.h"
#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/ports/line.h"

/// The virtual devices of a scenario: which are plugged in, with which ports.
///
/// Threads: one at a time.
class Workbench {
  public:
    struct Port {
        const PortSpec* spec = nullptr;
        bool unplugged = false;     // taken off its device by itself
        bool broken = false;        // listed, and does not work
        bool stalled = false;       // takes nothing
        bool listed = false;        // has a place in the list
        uint64_t arrival = 0;       // of the present line
        std::unique_ptr<Line> line; // null: not there
    };

    struct Device {
        const DeviceSpec* spec = nullptr;
        bool present = false;
        bool listed = false; // has a place in the list
        std::string mode;
        std::vector<Port> ports;
    };

    /// Starts with a scenario's devices, none of them plugged in.
    /// @param scenario  must outlive the workbench
    explicit Workbench(const Scenario& scenario);

    std::vector<Device>& Devices() { return m_Devices; }
    Device* FindDevice(const std::string& name);
    Port* FindPort(const std::string& name);
    Device* DeviceOf(const Port& port);

    /// Whether a port should be there, by its device's state.
    static bool BelongsHere(const Device& device, const Port& port);

    /// Gives every port of the device that should be there a line. When one cannot be made, those
    /// made before are taken back.
    /// @throws std::runtime_error with the reason
    void AddLines(Device& device, ScenarioTime now);

    /// Gives the free places in the list of devices, and in each device's list of ports, to those
    /// that have none, in the scenario's order. Who has one keeps it until it is free: when he is
    /// gone at the next giving.
    /// @return how many devices and ports there was no place for
    size_t GivePlaces();

    /// What is attached now and has a place.
    PortTable Table() const;

  private:
    std::vector<Device> m_Devices;
};

#endif

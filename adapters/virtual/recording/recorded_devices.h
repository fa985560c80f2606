// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_DEVICES_H
#define KOVASMGR_ADAPTERS_VIRTUAL_RECORDED_DEVICES_H

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/recording/recorded_call.h"

/// All devices and ports that a recording's enumerations ever had, and how they came and went.
class RecordedDevices {
  public:
    /// Takes an enumeration. What it says else than the one before becomes events of its time; the
    /// first says what is present at the start.
    /// @param line  of the recording, for the events
    /// @throws std::runtime_error with the reason when there are more than a scenario may have
    void See(const std::vector<RecordedDevice>& devices, ScenarioTime time, size_t line);

    std::vector<DeviceSpec> TakeDevices() { return std::move(m_Specs); }
    std::vector<Event> TakeEvents() { return std::move(m_Events); }

    /// Ports that were seen at a second device as well, where they are left out: a port of a
    /// scenario belongs to one device.
    const std::set<std::string>& MovedPorts() const { return m_Moved; }

  private:
    // How a device of m_Specs stands after the latest enumeration.
    struct Device {
        bool present;
        std::vector<bool> attached; // its ports: whether they would be there if it were
    };
    struct Moment {
        ScenarioTime time;
        size_t line;
        std::vector<Event> gone;
        std::vector<Event> come;

        Event Make(ActionKind kind, const std::string& target) const;
    };

    size_t Find(const RecordedDevice& seen);
    void AddPort(size_t place, const RecordedPort& seen, bool present);
    std::vector<RecordedPort> OwnPorts(const RecordedDevice& seen);
    void SeeDevice(size_t place, const std::set<std::string>& ports, Moment& moment);
    void SeeNothing(size_t place, Moment& moment);

    std::vector<DeviceSpec> m_Specs;
    std::vector<Device> m_Devices;
    std::vector<Event> m_Events;
    std::map<std::string, size_t> m_Places;      // of devices, by name
    std::map<std::string, std::string> m_Owners; // of ports: the device
    std::set<std::string> m_Known;               // ports of m_Specs
    std::set<std::string> m_Moved;
    std::set<int32_t> m_Ids;
    bool m_IsFirst = true;
};

#endif

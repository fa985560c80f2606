// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_NAMES_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_NAMES_H

#include <map>
#include <set>
#include <string>

#include "adapters/virtual/language/scenario.h"

/// The names of a scenario: that each is there once, and that events mention none but those.
///
/// Each function throws std::runtime_error with the reason.
class ScenarioNames {
  public:
    /// A device, without its ports.
    void AddDevice(const DeviceSpec& device);

    /// A port of a device that has been added: its name and mode.
    void AddPort(const std::string& device, const PortSpec& port);
    void AddPortId(const PortSpec& port);

    /// To be asked when all devices are there.
    void CheckEvent(const Event& event) const;

  private:
    void NeedDevice(const std::string& name) const;
    void NeedPort(const std::string& name) const;
    void NeedMode(const std::string& device, const std::string& mode) const;
    void CheckTarget(const Action& action) const;

    std::map<std::string, std::set<std::string>> m_Modes; // of each device
    std::set<std::string> m_Ports;
    std::set<std::string> m_Links;
    std::set<int32_t> m_Ids;
};

#endif

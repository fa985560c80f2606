// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SIMULATION_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SIMULATION_H

#include <string>
#include <utility>
#include <vector>

#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/simulation/event_log.h"
#include "adapters/virtual/simulation/host_calls.h"
#include "adapters/virtual/simulation/scenario_clock.h"

/// A scenario that runs: what a session and the host's calls share. A call that is inside when the
/// session ends keeps it alive; it holds nothing but memory.
///
/// Threads: any.
class Simulation {
  public:
    explicit Simulation(Scenario scenario)
        : m_Scenario(std::move(scenario)), m_Clock(m_Scenario.speed), m_Log(PortNames(m_Scenario)),
          m_Calls(m_Scenario, m_Clock, m_Log) {}
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    const Scenario& TheScenario() const { return m_Scenario; }
    ScenarioClock& Clock() { return m_Clock; }
    EventLog& Log() { return m_Log; }
    HostCalls& Calls() { return m_Calls; }

  private:
    static std::vector<std::string> PortNames(const Scenario& scenario) {
        std::vector<std::string> names;
        for (const DeviceSpec& device : scenario.devices) {
            for (const PortSpec& port : device.ports) {
                names.push_back(port.name);
            }
        }
        return names;
    }

    const Scenario m_Scenario;
    ScenarioClock m_Clock;
    EventLog m_Log;
    HostCalls m_Calls;
};

#endif

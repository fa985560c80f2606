// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_DIRECTOR_H
#define KOVASMGR_ADAPTERS_VIRTUAL_DIRECTOR_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "adapters/virtual/ports/poll_set.h"
#include "adapters/virtual/ports/virtual_ports.h"
#include "adapters/virtual/simulation/random_bytes.h"
#include "adapters/virtual/simulation/simulation.h"
#include "adapters/virtual/simulation/timeline.h"

/// Lets a scenario's events happen: those of its time, what the host has caused, and what is
/// ordered by hand.
///
/// Threads: one at a time.
class Director {
  public:
    /// Begins with what is to happen at time 0.
    /// @param ports  must outlive the director
    Director(std::shared_ptr<Simulation> simulation, VirtualPorts& ports);

    /// Wakes the poll set when something is due.
    void Watch(PollSet& waiting) const;

    /// Lets happen what is due; when that is much, a part of it. Writes the events when the scenario
    /// has ended: a host may be killed afterwards.
    void Serve();

    /// Does what somebody orders.
    /// @return the ticket of the notice, if there is one (see StateNotifier::IsTold)
    /// @throws std::runtime_error with the reason
    std::optional<uint64_t> Order(const Action& action);

    void Pause();
    void Continue();

    /// A line each: time, speed, seed and state.
    std::string Status() const;

    std::string Events() const { return m_Simulation->Log().Text(); }
    std::string List() const { return m_Ports.List(); }

  private:
    bool HasEnded() const;
    bool DoNext(ScenarioTime now);
    void DoPlanned(const Timeline::Due& due);
    void DoPending(const PendingAction& pending);
    std::optional<uint64_t> Do(const Action& action, ScenarioTime time, uint64_t source);
    uint64_t MovePlug(const Action& action);
    Action WithBytes(Action action, uint64_t source);
    std::string RandomText(const Action& action, uint64_t source);

    std::shared_ptr<Simulation> m_Simulation;
    VirtualPorts& m_Ports;
    Timeline m_Timeline;
    std::map<std::string, RandomBytes> m_Random; // by purpose and port
    uint64_t m_NextOrder;                        // sources of orders follow those of the events
    bool m_HasNotedEnd = false;
};

#endif

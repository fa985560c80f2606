// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_PENDING_ACTIONS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_PENDING_ACTIONS_H

#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "adapters/virtual/language/event.h"
#include "adapters/virtual/simulation/event_log.h"

/// An action that the host has caused and that is still to be done.
struct PendingAction {
    Action action;
    uint64_t source = 0;   // see FaultQueue::Arm
    EventLog::Place place; // of its line
    size_t opening = 0;    // is dropped when the port is opened anew; 0: is not
};

/// Actions by the time at which they are due; those of one time in the order in which they came.
///
/// Threads: one at a time.
class PendingActions {
  public:
    void Add(ScenarioTime due, PendingAction action) { m_Actions.emplace(due, std::move(action)); }

    std::optional<ScenarioTime> Next() const {
        return m_Actions.empty() ? std::nullopt : std::optional(m_Actions.begin()->first);
    }

    std::optional<PendingAction> TakeDue(ScenarioTime now) {
        if (m_Actions.empty() || m_Actions.begin()->first > now) {
            return std::nullopt;
        }
        return std::move(m_Actions.extract(m_Actions.begin()).mapped());
    }

  private:
    std::multimap<ScenarioTime, PendingAction> m_Actions;
};

#endif

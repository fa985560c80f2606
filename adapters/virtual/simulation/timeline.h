// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_TIMELINE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_TIMELINE_H

#include <cstddef>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "adapters/virtual/language/event.h"

/// Which of a scenario's events is next by the clock. Two of one time come in the scenario's order,
/// and one that is late comes all the same, so the order is the same each time.
///
/// Threads: one at a time.
class Timeline {
  public:
    struct Due {
        ScenarioTime time; // when it was to be, however late it is
        size_t event;      // its place among the scenario's
    };

    /// @param events  must outlive the timeline; only those with At and Every count
    /// @param end     what would come later does not come; nothing: there is no end
    Timeline(const std::vector<Event>& events, std::optional<ScenarioTime> end);

    /// When the next one is to be, if there is one.
    std::optional<ScenarioTime> Next() const;

    /// The next one, once, if its time has come.
    std::optional<Due> TakeDue(ScenarioTime now);

  private:
    void Plan(ScenarioTime time, size_t event);

    const std::vector<Event>& m_Events;
    const std::optional<ScenarioTime> m_End;
    std::set<std::pair<ScenarioTime, size_t>> m_Planned; // the next time of each event
};

#endif

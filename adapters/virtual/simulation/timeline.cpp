// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/timeline.h"

Timeline::Timeline(const std::vector<Event>& events, std::optional<ScenarioTime> end)
    : m_Events(events), m_End(end) {
    for (size_t i = 0; i < events.size(); ++i) {
        const Trigger& trigger = events[i].trigger;
        if (trigger.kind == TriggerKind::At) {
            Plan(trigger.time, i);
        } else if (trigger.kind == TriggerKind::Every) {
            Plan(trigger.start + trigger.time, i);
        }
    }
}

std::optional<ScenarioTime> Timeline::Next() const {
    if (m_Planned.empty()) {
        return std::nullopt;
    }
    return m_Planned.begin()->first;
}

std::optional<Timeline::Due> Timeline::TakeDue(ScenarioTime now) {
    if (m_Planned.empty() || m_Planned.begin()->first > now) {
        return std::nullopt;
    }
    const auto [time, event] = *m_Planned.begin();
    m_Planned.erase(m_Planned.begin());
    const Trigger& trigger = m_Events[event].trigger;
    if (trigger.kind == TriggerKind::Every) {
        Plan(time + trigger.time, event);
    }
    return Due{time, event};
}

void Timeline::Plan(ScenarioTime time, size_t event) {
    const Trigger& trigger = m_Events[event].trigger;
    const bool isOver = trigger.kind == TriggerKind::Every && trigger.end && time > *trigger.end;
    if (!isOver && !(m_End && time > *m_End)) {
        m_Planned.emplace(time, event);
    }
}

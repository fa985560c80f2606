// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/port_watch.h"

#include "adapters/virtual/language/action_reader.h"

namespace {

bool IsAboutItsCall(const Event& event) {
    return IsFault(event.action) && event.after.count() == 0 &&
           event.action.operation == event.trigger.operation &&
           event.action.target == event.trigger.port;
}

} // namespace

void PortWatch::SetSpec(const PortSpec& spec, const ScenarioClock& clock) {
    if (spec.baud) {
        pace.emplace(*spec.baud, clock);
    }
    if (spec.farEnd == FarEndKind::Recording) {
        talk.emplace(spec.openings);
    }
}

HostCall PortWatch::Begin(Operation operation, const std::vector<Event>& events, ScenarioTime now) {
    Calls& made = Of(operation);
    HostCall call{this, operation, ++made.count, {}, {}};
    for (const size_t number : made.rules) {
        const Event& event = events[number];
        if (event.trigger.nth != 0 && event.trigger.nth != call.number) {
            continue;
        }
        if (IsAboutItsCall(event)) {
            made.faults.Arm(event.action, now, number);
        } else {
            call.triggered.push_back(number);
        }
    }
    if (!made.faults.IsEmpty()) {
        call.faults = made.faults.Take(now);
    }
    return call;
}

void PortWatch::Open(int newHandle) {
    handle = newHandle;
    ++openings;
    matcher.Restart();
    if (pace) {
        pace->Restart();
    }
}

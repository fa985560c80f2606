// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/fault_queue.h"

#include <algorithm>

void FaultQueue::Arm(const Action& fault, ScenarioTime now, uint64_t source) {
    m_Waiting.remove_if([&](const Armed& armed) { return armed.source == source; });
    Armed armed{source, fault.kind, fault.count, fault.delay, fault.extent.calls, std::nullopt};
    if (fault.extent.calls == 0 && fault.extent.time.count() > 0) {
        armed.until = now + fault.extent.time;
    }
    m_Waiting.push_back(armed);
}

Faults FaultQueue::Take(ScenarioTime now) {
    DropOld(now);
    Faults faults;
    if (const auto armed = TakeOne(ActionKind::Delay)) {
        faults.delay = armed->delay;
    }
    faults.fails = TakeOne(ActionKind::Fail).has_value();
    if (!faults.fails) {
        if (const auto armed = TakeOne(ActionKind::Shorten)) {
            faults.limit = armed->count;
        }
    }
    return faults;
}

void FaultQueue::DropOld(ScenarioTime now) {
    m_Waiting.remove_if([&](const Armed& armed) { return armed.until && now >= *armed.until; });
}

std::optional<FaultQueue::Armed> FaultQueue::TakeOne(ActionKind kind) {
    const auto found = std::find_if(m_Waiting.begin(), m_Waiting.end(),
                                    [&](const Armed& armed) { return armed.kind == kind; });
    if (found == m_Waiting.end()) {
        return std::nullopt;
    }
    const Armed taken = *found;
    if (found->calls > 0 && --found->calls == 0) {
        m_Waiting.erase(found);
    }
    return taken;
}

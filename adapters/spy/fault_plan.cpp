// SPDX-License-Identifier: MIT
#include "adapters/spy/fault_plan.h"

#include <time.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "OSAdapt.h"

namespace {

constexpr std::chrono::nanoseconds kLongest = std::chrono::seconds(60);

bool IsAbout(const Fault& fault, OSADAPT_SPY_KIND call, const KnownPort* port) {
    return fault.call == call &&
           (fault.port.empty() || (port != nullptr && fault.port == port->name));
}

} // namespace

void CallFate::Add(const Fault& fault) {
    if (fault.kind == FaultKind::Delay) {
        m_Delay = std::min(m_Delay + fault.delay, kLongest);
    } else if (m_Fault == nullptr) {
        m_Fault = &fault;
    } else {
        return;
    }
    m_Text += (m_Text.empty() ? "" : ",") + fault.text;
}

void CallFate::Wait() const {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(m_Delay);
    timespec left{static_cast<time_t>(seconds.count()),
                  static_cast<long>((m_Delay - seconds).count())};
    while (m_Delay.count() != 0 && clock_nanosleep(CLOCK_MONOTONIC, 0, &left, &left) == EINTR) {
    }
}

bool CallFate::IsPassedOn() const { return !IsOf(FaultKind::Fail) && !IsOf(FaultKind::Result); }

long CallFate::Shortened(long length) const {
    return IsOf(FaultKind::Short) ? std::min(length, m_Fault->number) : length;
}

int CallFate::Result() const {
    return IsOf(FaultKind::Result) ? static_cast<int>(m_Fault->number) : OS_ADAPT_FAILED;
}

FaultPlan::FaultPlan(std::vector<Fault> faults) {
    for (Fault& fault : faults) {
        m_Entries.push_back({std::move(fault)});
    }
}

CallFate FaultPlan::Next(OSADAPT_SPY_KIND call, const KnownPort* port) {
    CallFate fate;
    if (IsEmpty()) {
        return fate;
    }
    const std::lock_guard<std::mutex> lock(m_Mutex);
    for (Entry& entry : m_Entries) {
        if (!IsAbout(entry.fault, call, port)) {
            continue;
        }
        const uint64_t number = ++entry.calls;
        if (number >= entry.fault.first && number <= entry.fault.last) {
            fate.Add(entry.fault);
        }
    }
    return fate;
}

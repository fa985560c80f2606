// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/host_calls.h"

#include <stdexcept>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/language/action_reader.h"

using Lock = std::unique_lock<std::mutex>;

HostCalls::HostCalls(const Scenario& scenario, ScenarioClock& clock, EventLog& log)
    : m_Scenario(scenario), m_Clock(clock), m_Log(log) {
    for (const Operation operation : {Operation::Open, Operation::Close, Operation::Enumerate}) {
        m_Matters[static_cast<size_t>(operation)] = true;
    }
    AddPorts();
    for (size_t i = 0; i < scenario.events.size(); ++i) {
        AddRule(i);
    }
}

void HostCalls::AddPorts() {
    for (const DeviceSpec& device : m_Scenario.devices) {
        for (const PortSpec& spec : device.ports) {
            PortWatch& port = m_Ports.emplace_back(spec.name, m_Ports.size());
            port.SetSpec(spec, m_Clock);
            m_ByName[spec.name] = &port;
            m_Matters[static_cast<size_t>(Operation::Write)] |= spec.baud || port.talk;
            m_Matters[static_cast<size_t>(Operation::Read)] |= spec.baud.has_value();
        }
    }
    m_Ports.emplace_back("", m_Ports.size());
    m_ByName[""] = &m_Ports.back();
}

void HostCalls::AddRule(size_t number) {
    const auto& [trigger, action, after, text, line] = m_Scenario.events[number];
    m_Matters[static_cast<size_t>(Operation::Write)] = true;
    if (trigger.kind == TriggerKind::OnBytes) {
        Need(trigger.port).matcher.Add(trigger.bytes, number);
    }
    if (trigger.kind == TriggerKind::OnCall) {
        Need(trigger.port).Of(trigger.operation).rules.push_back(number);
        m_Matters[static_cast<size_t>(trigger.operation)] = true;
    }
    if (IsFault(action)) {
        m_Matters[static_cast<size_t>(action.operation)] = true;
    }
}

bool HostCalls::Matters(Operation operation) const {
    const Lock lock(m_Mutex);
    return m_Matters[static_cast<size_t>(operation)];
}

std::optional<HostCall> HostCalls::Begin(Operation operation, const std::string& portName) {
    const Lock lock(m_Mutex);
    const auto found = m_ByName.find(portName);
    if (portName.empty() || found == m_ByName.end()) {
        return std::nullopt;
    }
    return BeginLocked(*found->second, operation);
}

std::optional<HostCall> HostCalls::Begin(Operation operation, int handle) {
    const Lock lock(m_Mutex);
    const auto found = m_ByHandle.find(handle);
    if (found == m_ByHandle.end()) {
        return std::nullopt;
    }
    return BeginLocked(*found->second, operation);
}

HostCall HostCalls::BeginEnumeration() {
    const Lock lock(m_Mutex);
    return BeginLocked(m_Ports.back(), Operation::Enumerate);
}

HostCall HostCalls::BeginLocked(PortWatch& port, Operation operation) {
    return port.Begin(operation, m_Scenario.events, m_Clock.Now());
}

void HostCalls::WaitOut(const HostCall& call) {
    if (!call.faults.delay) {
        return;
    }
    Lock lock(m_Mutex);
    const ScenarioTime until = m_Clock.Now() + *call.faults.delay;
    while (!m_WaitingEnded && m_Clock.Now() < until) {
        if (const auto when = m_Clock.When(until)) {
            m_Changed.WaitUntil(lock, *when);
        } else {
            m_Changed.Wait(lock);
        }
    }
}

void HostCalls::EndFailed(const HostCall& call) {
    const Lock lock(m_Mutex);
    NoteCall(call, " failed");
    Finish(call);
}

void HostCalls::EndOpen(const HostCall& call, int handle) {
    const Lock lock(m_Mutex);
    PortWatch& port = *call.port;
    const ScenarioTime now = m_Clock.Now();
    if (port.handle) {
        m_ByHandle.erase(*port.handle); // an opening anew closes it
    }
    m_ByHandle[handle] = &port;
    port.Open(handle);
    m_Log.NotePort(port.track, "open");
    Finish(call);
    if (port.talk) {
        Play(port, port.talk->Open(now));
    }
}

void HostCalls::EndClose(const HostCall& call, int handle) {
    const Lock lock(m_Mutex);
    m_ByHandle.erase(handle);
    if (call.port->handle == handle) {
        call.port->handle.reset();
    }
    m_Log.NotePort(call.port->track, "close");
    Finish(call);
}

// By the byte, so that it does not matter in which pieces the host sends them.
void HostCalls::EndWrite(const HostCall& call, std::string_view taken, size_t wanted) {
    const Lock lock(m_Mutex);
    PortWatch& port = *call.port;
    if (call.faults.limit && *call.faults.limit < wanted) {
        NoteCall(call, " took " + std::to_string(*call.faults.limit) + " bytes");
    }
    Finish(call);
    if (port.matcher.IsEmpty() && !port.talk) {
        return;
    }
    const ScenarioTime now = m_Clock.Now();
    for (size_t i = 0; i < taken.size(); ++i) {
        const size_t behind = taken.size() - 1 - i;
        TakeByte(port, taken[i], port.pace ? port.pace->Arrival(behind) : now);
    }
}

void HostCalls::EndOther(const HostCall& call) {
    const Lock lock(m_Mutex);
    Finish(call);
}

void HostCalls::Arm(const Action& fault, ScenarioTime now, uint64_t source) {
    const Lock lock(m_Mutex);
    ArmLocked(fault, now, source);
}

void HostCalls::Disarm(const std::string& portName) {
    const Lock lock(m_Mutex);
    for (PortWatch::Calls& calls : Need(portName).calls) {
        calls.faults.Clear();
    }
}

std::optional<ScenarioTime> HostCalls::NextPending() {
    const Lock lock(m_Mutex);
    return m_Pending.Next();
}

std::optional<PendingAction> HostCalls::TakePending(ScenarioTime now) {
    const Lock lock(m_Mutex);
    while (auto pending = m_Pending.TakeDue(now)) {
        if (pending->opening == 0 || Need(pending->action.target).openings == pending->opening) {
            return pending;
        }
    }
    return std::nullopt;
}

void HostCalls::SetWaker(void (*wake)(void* argument), void* argument) {
    const Lock lock(m_Mutex);
    m_Wake = wake;
    m_WakeArgument = argument;
}

void HostCalls::EndWaiting() {
    const Lock lock(m_Mutex);
    m_WaitingEnded = true;
    m_Changed.NotifyAll();
    for (PortWatch& port : m_Ports) {
        if (port.pace) {
            port.pace->EndWaiting();
        }
    }
}

void HostCalls::ClockChanged() {
    const Lock lock(m_Mutex);
    m_Changed.NotifyAll();
    for (PortWatch& port : m_Ports) {
        if (port.pace) {
            port.pace->ClockChanged();
        }
    }
}

PortWatch& HostCalls::Need(const std::string& portName) {
    const auto found = m_ByName.find(portName);
    if (found == m_ByName.end()) {
        throw std::runtime_error("no port '" + Printable(portName) + "'");
    }
    return *found->second;
}

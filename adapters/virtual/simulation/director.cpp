// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/director.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/language/action_text.h"
#include "adapters/virtual/simulation/call_gate.h"
#include "adapters/virtual/simulation/event_file.h"

namespace {

// So much is done before commands and lines are looked after.
constexpr int kMaxAtOnce = 64;

// No terminal takes as much at once; what is left out could not be told from what is lost.
constexpr size_t kMaxSent = size_t{1024} * 1024;

std::string Repeat(const std::string& bytes, size_t times) {
    std::string text;
    for (size_t i = 0; i < times && text.size() < kMaxSent; ++i) {
        text += bytes;
    }
    return text;
}

std::string Seconds(ScenarioTime time) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6f", static_cast<double>(time.count()) / 1e6);
    return text;
}

std::string Plain(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

} // namespace

Director::Director(std::shared_ptr<Simulation> simulation, VirtualPorts& ports)
    : m_Simulation(std::move(simulation)), m_Ports(ports),
      m_Timeline(m_Simulation->TheScenario().events, m_Simulation->TheScenario().end),
      m_NextOrder(m_Simulation->TheScenario().events.size()) {
    while (DoNext(ScenarioTime(0))) {
    }
}

void Director::Watch(PollSet& waiting) const {
    const auto end = m_HasNotedEnd ? std::nullopt : m_Simulation->TheScenario().end;
    for (const auto& next : {m_Timeline.Next(), m_Simulation->Calls().NextPending(), end}) {
        if (next) {
            waiting.WakeAt(m_Simulation->Clock().When(*next));
        }
    }
}

void Director::Serve() {
    const ScenarioTime now = m_Simulation->Clock().Now();
    for (int i = 0; i < kMaxAtOnce && DoNext(now); ++i) {
    }
    if (!m_HasNotedEnd && HasEnded()) {
        m_HasNotedEnd = true;
        WriteEventFile(m_Simulation->Log());
    }
}

std::optional<uint64_t> Director::Order(const Action& given) {
    const uint64_t source = m_NextOrder++;
    const Action action = WithBytes(given, source);
    const EventLog::Place place = m_Simulation->Log().NoteCommand(ActionText(action));
    try {
        const auto ticket = Do(action, m_Simulation->Clock().Now(), source);
        GuardCalls(m_Simulation);
        return ticket;
    } catch (const std::exception& error) {
        m_Simulation->Log().SetError(place, error.what());
        throw;
    }
}

void Director::Pause() {
    m_Simulation->Log().NoteCommand("pause");
    m_Simulation->Clock().Pause();
    m_Simulation->Calls().ClockChanged();
}

void Director::Continue() {
    m_Simulation->Log().NoteCommand("continue");
    m_Simulation->Clock().Continue();
    m_Simulation->Calls().ClockChanged();
}

std::string Director::Status() const {
    const Scenario& scenario = m_Simulation->TheScenario();
    const ScenarioClock& clock = m_Simulation->Clock();
    const ScenarioTime now = clock.Now();
    const char* const state = clock.IsPaused() ? "paused" : "running";
    return "time " + Seconds(now) + "\nspeed " + Plain(clock.Speed()) + "\nseed " +
           std::to_string(scenario.seed) + "\nstate " + (HasEnded() ? "ended" : state) + "\n";
}

bool Director::HasEnded() const {
    const auto end = m_Simulation->TheScenario().end;
    return end && m_Simulation->Clock().Now() >= *end && !m_Timeline.Next();
}

// @return false when nothing is due.
bool Director::DoNext(ScenarioTime now) {
    HostCalls& calls = m_Simulation->Calls();
    const auto planned = m_Timeline.Next();
    const auto caused = calls.NextPending();
    if (planned && *planned <= now && (!caused || *planned <= *caused)) {
        DoPlanned(*m_Timeline.TakeDue(now));
        return true;
    }
    if (const auto pending = calls.TakePending(now)) {
        DoPending(*pending);
        return true;
    }
    return false;
}

void Director::DoPlanned(const Timeline::Due& due) {
    const Action action =
        WithBytes(m_Simulation->TheScenario().events[due.event].action, due.event);
    const EventLog::Place place = m_Simulation->Log().NoteTime(due.time, ActionText(action));
    try {
        Do(action, due.time, due.event);
    } catch (const std::exception& error) {
        m_Simulation->Log().SetError(place, error.what());
    }
}

void Director::DoPending(const PendingAction& pending) {
    try {
        Do(pending.action, m_Simulation->Clock().Now(), pending.source);
    } catch (const std::exception& error) {
        m_Simulation->Log().SetError(pending.place, error.what());
    }
}

std::optional<uint64_t> Director::Do(const Action& action, ScenarioTime time, uint64_t source) {
    switch (action.kind) {
    case ActionKind::Send:
        m_Ports.Send(action.target, Repeat(action.bytes, action.times));
        return std::nullopt;
    case ActionKind::SendRandom:
        m_Ports.Send(action.target, action.bytes);
        return std::nullopt;
    case ActionKind::Stall:
    case ActionKind::Resume:
        m_Ports.SetStalled(action.target, action.kind == ActionKind::Stall);
        return std::nullopt;
    case ActionKind::Break:
        m_Ports.SetBroken(action.target, true);
        return std::nullopt;
    case ActionKind::Mend:
        m_Ports.SetBroken(action.target, false);
        m_Simulation->Calls().Disarm(action.target);
        return std::nullopt;
    case ActionKind::Fail:
    case ActionKind::Shorten:
    case ActionKind::Delay:
        m_Simulation->Calls().Arm(action, time, source);
        return std::nullopt;
    default:
        return MovePlug(action);
    }
}

uint64_t Director::MovePlug(const Action& action) {
    switch (action.kind) {
    case ActionKind::Plug:
        return m_Ports.Plug(action.target);
    case ActionKind::Pull:
        return m_Ports.Pull(action.target);
    case ActionKind::Replug:
        return m_Ports.Replug(action.target);
    case ActionKind::Switch:
        return m_Ports.SwitchMode(action.target, action.mode);
    case ActionKind::PlugPort:
        return m_Ports.PlugPort(action.target);
    default:
        return m_Ports.UnplugPort(action.target);
    }
}

// Before they are noted, so that the log tells which they were.
Action Director::WithBytes(Action action, uint64_t source) {
    if (action.kind == ActionKind::SendRandom) {
        action.bytes = RandomText(action, source);
    }
    return action;
}

// Orders by hand do not change what the scenario's own events send.
std::string Director::RandomText(const Action& action, uint64_t source) {
    const Scenario& scenario = m_Simulation->TheScenario();
    const bool isOrder = source >= scenario.events.size();
    const std::string purpose = (isOrder ? "order " : "time ") + action.target;
    auto [random, isNew] = m_Random.try_emplace(purpose, scenario.seed, purpose);
    const size_t times = std::min(action.times, kMaxSent / std::max<size_t>(action.count, 1));
    return random->second.Next(action.count * times);
}

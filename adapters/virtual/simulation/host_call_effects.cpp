// SPDX-License-Identifier: MIT
//
// What calls come to: lines in the log, and what they cause. With the lock held, all of it.
#include <utility>

#include "adapters/virtual/language/action_reader.h"
#include "adapters/virtual/language/action_text.h"
#include "adapters/virtual/simulation/host_calls.h"

EventLog::Place HostCalls::Note(const PortWatch& port, Operation operation,
                                const std::string& event) {
    return operation == Operation::Read ? m_Log.NoteRead(port.track, event)
                                        : m_Log.NotePort(port.track, event);
}

void HostCalls::NoteCall(const HostCall& call, const std::string& what) {
    Note(*call.port, call.operation,
         OperationText(call.operation) + (" " + std::to_string(call.number)) + what);
}

void HostCalls::Finish(const HostCall& call) {
    if (call.faults.delay) {
        NoteCall(call, " delayed");
    }
    for (const size_t number : call.triggered) {
        Cause(*call.port, call.operation, number, m_Clock.Now());
    }
}

void HostCalls::Cause(const PortWatch& port, Operation operation, size_t number, ScenarioTime now) {
    const Event& event = m_Scenario.events[number];
    const EventLog::Place place = Note(port, operation, ActionText(event.action, port.name));
    if (IsFault(event.action) && event.after.count() == 0) {
        ArmLocked(event.action, now, number);
    } else {
        AddPending(now + event.after, {event.action, number, place, 0});
    }
}

void HostCalls::TakeByte(PortWatch& port, char byte, ScenarioTime arrival) {
    if (const auto number = port.matcher.Take(byte)) {
        m_Log.NotePort(port.track, "got " + BytesText(m_Scenario.events[*number].trigger.bytes));
        Cause(port, Operation::Write, *number, arrival);
    }
    if (!port.talk) {
        return;
    }
    const RecordedTalk::Answer answer = port.talk->Take(byte, arrival);
    if (answer.differs) {
        m_Log.NotePort(port.track, "differs at byte " + std::to_string(port.talk->Taken()));
    }
    Play(port, answer.pieces);
}

void HostCalls::Play(PortWatch& port, const std::vector<RecordedTalk::Piece>& pieces) {
    for (const RecordedTalk::Piece& piece : pieces) {
        PendingAction pending;
        pending.action.kind = ActionKind::Send;
        pending.action.target = port.name;
        pending.action.bytes = *piece.bytes;
        pending.opening = port.openings;
        pending.place = m_Log.NotePort(port.track, "sent " + BytesText(*piece.bytes));
        AddPending(piece.due, std::move(pending));
    }
}

void HostCalls::ArmLocked(const Action& fault, ScenarioTime now, uint64_t source) {
    Need(fault.target).Of(fault.operation).faults.Arm(fault, now, source);
    m_Matters[static_cast<size_t>(fault.operation)] = true;
}

void HostCalls::AddPending(ScenarioTime due, PendingAction action) {
    m_Pending.Add(due, std::move(action));
    if (m_Wake != nullptr) {
        m_Wake(m_WakeArgument);
    }
}

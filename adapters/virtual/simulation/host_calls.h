// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_HOST_CALLS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_HOST_CALLS_H

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "adapters/shared/condition.h"
#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/simulation/event_log.h"
#include "adapters/virtual/simulation/pending_actions.h"
#include "adapters/virtual/simulation/port_watch.h"
#include "adapters/virtual/simulation/scenario_clock.h"

/// What a scenario has to do with the host's calls: it counts them, finds those and the bytes that
/// events wait for, and lets them fail or last. What they cause is noted at once, in the order of
/// the calls, and done later by whoever asks for it.
///
/// Threads: any.
class HostCalls {
  public:
    /// All three must outlive this object.
    HostCalls(const Scenario& scenario, ScenarioClock& clock, EventLog& log);
    HostCalls(const HostCalls&) = delete;
    HostCalls& operator=(const HostCalls&) = delete;

    /// Whether calls of an operation may matter; what was true once stays true.
    bool Matters(Operation operation) const;

    /// @return nothing for a port or handle that is not known
    std::optional<HostCall> Begin(Operation operation, const std::string& portName);
    std::optional<HostCall> Begin(Operation operation, int handle);
    HostCall BeginEnumeration();

    /// Waits as long as the call is to be delayed. May be cancelled.
    void WaitOut(const HostCall& call);

    /// What the call came to. Each ends one call; not to be cancelled.
    void EndFailed(const HostCall& call);
    void EndOpen(const HostCall& call, int handle);
    void EndClose(const HostCall& call, int handle);
    void EndWrite(const HostCall& call, std::string_view taken, size_t wanted);
    void EndOther(const HostCall& call);

    /// Lets a fault wait for the calls to come.
    /// @throws std::runtime_error with the reason
    void Arm(const Action& fault, ScenarioTime now, uint64_t source);

    /// Takes all faults off a port.
    void Disarm(const std::string& portName);

    /// What the host has caused: when the next of it is due, and that one, once its time has come.
    std::optional<ScenarioTime> NextPending();
    std::optional<PendingAction> TakePending(ScenarioTime now);

    /// Is called, with a lock held, when the host has caused something; null for nobody.
    void SetWaker(void (*wake)(void* argument), void* argument);

    /// Ends all waiting for good, so that the host can end the session.
    void EndWaiting();

    /// The clock was set going or stopped.
    void ClockChanged();

  private:
    void AddPorts();
    void AddRule(size_t number);
    PortWatch& Need(const std::string& portName);
    HostCall BeginLocked(PortWatch& port, Operation operation);
    EventLog::Place Note(const PortWatch& port, Operation operation, const std::string& event);
    void NoteCall(const HostCall& call, const std::string& what);
    void Finish(const HostCall& call);
    void Cause(const PortWatch& port, Operation operation, size_t number, ScenarioTime now);
    void TakeByte(PortWatch& port, char byte, ScenarioTime arrival);
    void Play(PortWatch& port, const std::vector<RecordedTalk::Piece>& pieces);
    void ArmLocked(const Action& fault, ScenarioTime now, uint64_t source);
    void AddPending(ScenarioTime due, PendingAction action);

    const Scenario& m_Scenario;
    ScenarioClock& m_Clock;
    EventLog& m_Log;
    mutable std::mutex m_Mutex; // guards everything below
    Condition m_Changed;
    std::deque<PortWatch> m_Ports; // the last one is that of the enumerations
    std::map<std::string, PortWatch*> m_ByName;
    std::unordered_map<int, PortWatch*> m_ByHandle;
    std::array<bool, kOperations> m_Matters{};
    PendingActions m_Pending;
    void (*m_Wake)(void*) = nullptr;
    void* m_WakeArgument = nullptr;
    bool m_WaitingEnded = false;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_FAULT_QUEUE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_FAULT_QUEUE_H

#include <cstdint>
#include <list>
#include <optional>

#include "adapters/virtual/language/event.h"

/// What is to befall one call.
struct Faults {
    bool fails = false;
    std::optional<size_t> limit; // takes so many bytes at most
    std::optional<ScenarioTime> delay;

    bool IsAny() const { return fails || limit || delay; }
};

/// The faults that wait for the calls of one operation of one port.
///
/// Threads: one at a time.
class FaultQueue {
  public:
    /// @param source  what it comes from; replaces what waits of the same source
    void Arm(const Action& fault, ScenarioTime now, uint64_t source);

    /// What befalls a call that is made now: of each kind the one that has waited for longest. A
    /// call that fails is not shortened.
    Faults Take(ScenarioTime now);

    void Clear() { m_Waiting.clear(); }

    bool IsEmpty() const { return m_Waiting.empty(); }

  private:
    struct Armed {
        uint64_t source;
        ActionKind kind;
        size_t count;
        ScenarioTime delay;
        size_t calls;                      // so many are left; 0: it goes by the time
        std::optional<ScenarioTime> until; // with 0 calls; nothing: always
    };

    void DropOld(ScenarioTime now);
    std::optional<Armed> TakeOne(ActionKind kind);

    std::list<Armed> m_Waiting;
};

#endif

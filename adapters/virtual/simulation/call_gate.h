// SPDX-License-Identifier: MIT
//
// Stands before the adapter: what the host calls passes here first, so that a scenario can count
// it, let it fail and let it last. Calls that no scenario has anything to do with cost one look at
// a number.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_CALL_GATE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_CALL_GATE_H

#include <atomic>
#include <memory>

#include "adapters/virtual/language/event.h"
#include "adapters/virtual/simulation/simulation.h"

/// The calls that have to go the long way (see guarded_calls.h), a bit each. All of them while no
/// scenario runs: the first call starts it and is counted.
extern std::atomic<unsigned> g_GuardedCalls;

inline bool IsGuarded(Operation operation) {
    const unsigned guarded = g_GuardedCalls.load(std::memory_order_acquire);
    return (guarded >> static_cast<unsigned>(operation) & 1U) != 0;
}

/// Calls go past this simulation from now on. To be called again when more of them matter to it.
void GuardCalls(const std::shared_ptr<Simulation>& simulation);

/// They go past none.
void LeaveCalls();

/// Lets calls that a scenario delays go on now: the host ends the session and would wait for them.
void EndGuardedWaiting();

/// The simulation that calls go past; null when there is none.
std::shared_ptr<Simulation> GuardingSimulation();

#endif

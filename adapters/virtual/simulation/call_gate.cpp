// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/call_gate.h"

#include <unistd.h>

#include <mutex>
#include <new>
#include <utility>

namespace {

constexpr unsigned kAll = ~0U;

std::atomic<pid_t> g_Owner{0}; // the process whose calls go past a simulation

// Never destroyed: the process may end while threads of the host are inside.
struct Gate {
    std::mutex mutex; // guards everything below
    std::shared_ptr<Simulation> simulation;
};

Gate& TheGate() {
    alignas(Gate) static unsigned char storage[sizeof(Gate)];
    static auto* gate = new (storage) Gate;
    return *gate;
}

// The one before is let go after the lock.
void Replace(std::shared_ptr<Simulation> simulation, unsigned guarded) {
    Gate& gate = TheGate();
    const std::lock_guard<std::mutex> lock(gate.mutex);
    gate.simulation.swap(simulation);
    g_Owner = getpid();
    g_GuardedCalls.store(guarded, std::memory_order_release);
}

} // namespace

std::atomic<unsigned> g_GuardedCalls{kAll};

void GuardCalls(const std::shared_ptr<Simulation>& simulation) {
    unsigned guarded = 0;
    for (unsigned i = 0; i < kOperations; ++i) {
        if (simulation->Calls().Matters(static_cast<Operation>(i))) {
            guarded |= 1U << i;
        }
    }
    Replace(simulation, guarded);
}

void LeaveCalls() { Replace(nullptr, kAll); }

// A forked child has the memory but not the threads, and perhaps a lock that nobody lets go.
void EndGuardedWaiting() {
    if (g_Owner != getpid()) {
        return;
    }
    if (const auto simulation = GuardingSimulation()) {
        simulation->Calls().EndWaiting();
    }
}

std::shared_ptr<Simulation> GuardingSimulation() {
    Gate& gate = TheGate();
    const std::lock_guard<std::mutex> lock(gate.mutex);
    return gate.simulation;
}

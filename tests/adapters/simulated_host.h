// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_SIMULATED_HOST_H
#define KOVASMGR_TESTS_ADAPTERS_SIMULATED_HOST_H

#include <string>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/virtual_bench.h"

/// A virtual adapter that runs a scenario, and what tests of it need again and again.
class SimulatedHost : public VirtualBench {
  protected:
    SimulatedHost();

    /// Uses a scenario and makes the first call.
    /// @param events  with commas behind, each in single quotes
    /// @param rest    keys of the scenario before, and devices
    void Run(const std::string& events, const std::string& rest = kTwoPorts,
             const std::string& keys = "");

    /// A failing call is a failing test.
    int Open(const std::string& port) const;

    /// Waits until the scenario's clock shows that time.
    bool WaitForTime(double seconds) const;

    /// Waits until the scenario has ended.
    bool WaitForEnd() const;

    std::string Status(const std::string& key) const;

    /// What the log says of a track now: its events, a line each, without numbers.
    std::string Track(const std::string& track) const;

    /// The log's file, when the session has ended.
    std::string EventFile() const;

    /// Ends the session.
    void End() const { m_Adapter.UnRegister(nullptr); }

    /// A device "modem" with the scripted ports p1 and p2.
    static const char* const kTwoPorts;

    AdapterUnderTest m_Adapter;
};

#endif

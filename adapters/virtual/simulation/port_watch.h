// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_PORT_WATCH_H
#define KOVASMGR_ADAPTERS_VIRTUAL_PORT_WATCH_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "adapters/virtual/language/scenario.h"
#include "adapters/virtual/simulation/byte_matcher.h"
#include "adapters/virtual/simulation/fault_queue.h"
#include "adapters/virtual/simulation/line_pace.h"
#include "adapters/virtual/simulation/recorded_talk.h"

constexpr size_t kOperations = 5;

struct PortWatch;

/// A call of the host, while it lasts.
struct HostCall {
    PortWatch* port = nullptr;
    Operation operation = Operation::Open;
    size_t number = 0; // among the port's of that operation, from 1
    Faults faults;
    std::vector<size_t> triggered; // events that the call causes
};

/// What a scenario sees of the host's calls on one port, and does to them. The enumerations have
/// one too.
///
/// Threads: one at a time.
struct PortWatch {
    /// The calls of one operation.
    struct Calls {
        size_t count = 0;
        std::vector<size_t> rules; // events that wait for a call
        FaultQueue faults;
    };

    /// @param place  among all ports; also that of its track in the log
    PortWatch(std::string portName, size_t place) : name(std::move(portName)), track(place) {}

    void SetSpec(const PortSpec& spec, const ScenarioClock& clock);

    /// Counts a call, and says what is to befall it and what it causes.
    HostCall Begin(Operation operation, const std::vector<Event>& events, ScenarioTime now);

    /// Begins with a new stream of bytes in both directions.
    void Open(int newHandle);

    Calls& Of(Operation operation) { return calls[static_cast<size_t>(operation)]; }

    std::string name;
    size_t track;
    std::array<Calls, kOperations> calls;
    ByteMatcher matcher; // of what the host sends
    std::optional<int> handle;
    size_t openings = 0;
    std::optional<LinePace> pace; // with a baud rate only
    std::optional<RecordedTalk> talk;
};

#endif

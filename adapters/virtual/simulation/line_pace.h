// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_LINE_PACE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_LINE_PACE_H

#include <chrono>
#include <cstddef>
#include <mutex>

#include "adapters/shared/condition.h"
#include "adapters/virtual/simulation/pace.h"
#include "adapters/virtual/simulation/scenario_clock.h"

/// How fast a host's calls get bytes over a line with a baud rate: a write fills a transmitter's
/// buffer and then waits, a read gives what can have arrived.
///
/// Threads: any.
class LinePace {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    /// @param clock  must outlive this object
    LinePace(long baud, const ScenarioClock& clock)
        : m_Clock(clock), m_Departures(ByteTime(baud)), m_Arrivals(ByteTime(baud)) {}

    /// The host opens the port.
    void Restart();

    /// How many bytes may be written now.
    size_t WriteRoom(size_t wanted);
    void NoteWritten(size_t count);

    /// Waits until there is room, half a buffer if so much is wanted. May be cancelled.
    /// @param until  gives up then
    /// @return whether there is room
    bool WaitForRoom(size_t wanted, Instant until);

    /// When a byte that was written arrives at the far end; so many were written behind it.
    ScenarioTime Arrival(size_t behind);

    /// How many bytes may be read now.
    size_t ReadRoom(size_t wanted);

    /// @param isAll  there were no more
    void NoteRead(size_t count, bool isAll);

    /// Ends all waiting for good.
    void EndWaiting();

    /// The clock was set going or stopped.
    void ClockChanged();

  private:
    const ScenarioClock& m_Clock;
    std::mutex m_Mutex; // guards everything below
    Condition m_Changed;
    DeparturePace m_Departures;
    ArrivalPace m_Arrivals;
    bool m_WaitingEnded = false;
};

#endif

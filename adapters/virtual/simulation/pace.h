// SPDX-License-Identifier: MIT
//
// How fast bytes go over a line: one after the other, ten bits each.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_PACE_H
#define KOVASMGR_ADAPTERS_VIRTUAL_PACE_H

#include <chrono>
#include <cstddef>

#include "adapters/virtual/language/event.h"

/// The time of one byte.
std::chrono::nanoseconds ByteTime(long baud);

/// Bytes on their way out, like those in a transmitter's buffer.
///
/// Threads: one at a time.
class DeparturePace {
  public:
    /// So many bytes may wait.
    static constexpr size_t kRoom = 4096;

    /// @param byteTime  0: they are gone at once
    explicit DeparturePace(std::chrono::nanoseconds byteTime) : m_ByteTime(byteTime) {}

    /// How many more may be put now.
    size_t Room(ScenarioTime now) const;

    /// When there will be room for so many, at most kRoom.
    ScenarioTime WhenRoomFor(size_t count) const;

    void Put(size_t count, ScenarioTime now);

    /// When a byte that was put arrives, now or later.
    /// @param behind  so many were put after it
    ScenarioTime Arrival(ScenarioTime now, size_t behind) const;

    /// Forgets those that are on their way.
    void Restart() { m_Free = {}; }

  private:
    std::chrono::nanoseconds m_ByteTime;
    std::chrono::nanoseconds m_Free{0}; // when the last one is gone
};

/// Bytes that come in: no more of them than can have arrived since there was none.
///
/// Threads: one at a time.
class ArrivalPace {
  public:
    /// @param byteTime  not 0
    explicit ArrivalPace(std::chrono::nanoseconds byteTime) : m_ByteTime(byteTime) {}

    /// How many can have arrived and are not taken.
    size_t Arrived(ScenarioTime now) const;

    /// @param isAll  there were no more
    void Took(size_t count, bool isAll, ScenarioTime now);

    /// None has arrived until now.
    void Restart(ScenarioTime now) { m_TakenUntil = now; }

  private:
    std::chrono::nanoseconds m_ByteTime;
    std::chrono::nanoseconds m_TakenUntil{0}; // what arrived until then is taken
};

#endif

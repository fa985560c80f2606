// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_CLOCK_H
#define KOVASMGR_ADAPTERS_VIRTUAL_SCENARIO_CLOCK_H

#include <chrono>
#include <mutex>
#include <optional>

#include "adapters/virtual/language/event.h"

/// A scenario's time: starts at 0, goes as many times as fast as real time as its speed says, and
/// can be stopped. It never goes back.
///
/// Threads: any.
class ScenarioClock {
  public:
    using Instant = std::chrono::steady_clock::time_point;
    using Source = Instant (*)();

    /// Stands still until Continue.
    /// @param source  the real time
    explicit ScenarioClock(double speed, Source source = std::chrono::steady_clock::now)
        : m_Speed(speed), m_Source(source) {}
    ScenarioClock(const ScenarioClock&) = delete;
    ScenarioClock& operator=(const ScenarioClock&) = delete;

    ScenarioTime Now() const;

    /// The real time at which this clock will show that time, or an earlier one that is far away;
    /// nothing while it stands still.
    std::optional<Instant> When(ScenarioTime time) const;

    void Pause();
    void Continue();

    bool IsPaused() const;
    double Speed() const { return m_Speed; }

  private:
    ScenarioTime Shown() const;

    const double m_Speed;
    const Source m_Source;
    mutable std::mutex m_Mutex; // guards everything below
    bool m_Paused = true;
    ScenarioTime m_Base{0}; // what it showed when it was set going or stopped
    Instant m_Since{};      // when it was set going
};

#endif

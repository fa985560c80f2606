// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/scenario_clock.h"

#include <algorithm>
#include <cmath>

using Lock = std::lock_guard<std::mutex>;

namespace {

// Longer waits are cut, so that no sum overflows.
constexpr double kLongestWait = 3600e6;

} // namespace

ScenarioTime ScenarioClock::Now() const {
    const Lock lock(m_Mutex);
    return Shown();
}

// Rounded up: whoever waits until then finds that the time has come.
std::optional<ScenarioClock::Instant> ScenarioClock::When(ScenarioTime time) const {
    const Lock lock(m_Mutex);
    if (m_Paused) {
        return std::nullopt;
    }
    const Instant now = m_Source();
    const double left = static_cast<double>((time - Shown()).count()) / m_Speed;
    const double bounded = std::clamp(std::ceil(left), 0.0, kLongestWait);
    return now + std::chrono::microseconds(static_cast<long>(bounded));
}

void ScenarioClock::Pause() {
    const Lock lock(m_Mutex);
    m_Base = Shown();
    m_Paused = true;
}

void ScenarioClock::Continue() {
    const Lock lock(m_Mutex);
    if (m_Paused) {
        m_Paused = false;
        m_Since = m_Source();
    }
}

bool ScenarioClock::IsPaused() const {
    const Lock lock(m_Mutex);
    return m_Paused;
}

ScenarioTime ScenarioClock::Shown() const {
    if (m_Paused) {
        return m_Base;
    }
    const std::chrono::duration<double, std::micro> real = m_Source() - m_Since;
    return m_Base + ScenarioTime(static_cast<long>(real.count() * m_Speed));
}

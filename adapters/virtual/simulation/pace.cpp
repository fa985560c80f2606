// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/pace.h"

#include <algorithm>

using Nanoseconds = std::chrono::nanoseconds;

Nanoseconds ByteTime(long baud) { return Nanoseconds(std::chrono::seconds(10)) / baud; }

size_t DeparturePace::Room(ScenarioTime now) const {
    if (m_ByteTime.count() == 0 || m_Free <= now) {
        return kRoom;
    }
    const auto waiting = static_cast<size_t>((m_Free - now) / m_ByteTime);
    return waiting < kRoom ? kRoom - waiting : 0;
}

// Rounded up to the next microsecond: there is room then, not nearly.
ScenarioTime DeparturePace::WhenRoomFor(size_t count) const {
    const auto waiting = static_cast<Nanoseconds::rep>(kRoom - std::min(count, kRoom));
    return std::chrono::ceil<ScenarioTime>(m_Free - waiting * m_ByteTime);
}

void DeparturePace::Put(size_t count, ScenarioTime now) {
    m_Free = std::max(m_Free, Nanoseconds(now)) + static_cast<Nanoseconds::rep>(count) * m_ByteTime;
}

ScenarioTime DeparturePace::Arrival(ScenarioTime now, size_t behind) const {
    const auto arrival = m_Free - static_cast<Nanoseconds::rep>(behind) * m_ByteTime;
    return std::max(now, std::chrono::ceil<ScenarioTime>(arrival));
}

size_t ArrivalPace::Arrived(ScenarioTime now) const {
    return m_TakenUntil >= now ? 0 : static_cast<size_t>((now - m_TakenUntil) / m_ByteTime);
}

// A byte of which a part has arrived stays on its way when others wait behind it.
void ArrivalPace::Took(size_t count, bool isAll, ScenarioTime now) {
    m_TakenUntil += static_cast<Nanoseconds::rep>(count) * m_ByteTime;
    if (isAll) {
        m_TakenUntil = now;
    }
}

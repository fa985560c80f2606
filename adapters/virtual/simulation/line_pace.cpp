// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/line_pace.h"

#include <algorithm>

using Lock = std::unique_lock<std::mutex>;

void LinePace::Restart() {
    const Lock lock(m_Mutex);
    m_Departures.Restart();
    m_Arrivals.Restart(m_Clock.Now());
}

size_t LinePace::WriteRoom(size_t wanted) {
    const Lock lock(m_Mutex);
    return std::min(wanted, m_Departures.Room(m_Clock.Now()));
}

void LinePace::NoteWritten(size_t count) {
    const Lock lock(m_Mutex);
    m_Departures.Put(count, m_Clock.Now());
}

bool LinePace::WaitForRoom(size_t wanted, Instant until) {
    Lock lock(m_Mutex);
    const ScenarioTime due = m_Departures.WhenRoomFor(std::min(wanted, DeparturePace::kRoom / 2));
    while (!m_WaitingEnded && m_Clock.Now() < due) {
        if (std::chrono::steady_clock::now() >= until) {
            return false;
        }
        m_Changed.WaitUntil(lock, std::min(until, m_Clock.When(due).value_or(until)));
    }
    return !m_WaitingEnded;
}

ScenarioTime LinePace::Arrival(size_t behind) {
    const Lock lock(m_Mutex);
    return m_Departures.Arrival(m_Clock.Now(), behind);
}

size_t LinePace::ReadRoom(size_t wanted) {
    const Lock lock(m_Mutex);
    return std::min(wanted, m_Arrivals.Arrived(m_Clock.Now()));
}

void LinePace::NoteRead(size_t count, bool isAll) {
    const Lock lock(m_Mutex);
    m_Arrivals.Took(count, isAll, m_Clock.Now());
}

void LinePace::EndWaiting() {
    const Lock lock(m_Mutex);
    m_WaitingEnded = true;
    m_Changed.NotifyAll();
}

void LinePace::ClockChanged() {
    const Lock lock(m_Mutex);
    m_Changed.NotifyAll();
}

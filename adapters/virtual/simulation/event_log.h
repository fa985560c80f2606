// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_EVENT_LOG_H
#define KOVASMGR_ADAPTERS_VIRTUAL_EVENT_LOG_H

#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "adapters/virtual/language/event.h"

/// What happened in a scenario, as JSON lines: first what its time brought, then the commands, then
/// what the host did to each port, at last its enumerations. Each of these tracks is in order, but
/// for the reads of a port, which come last in its own: hosts read on a thread that nobody waits
/// for. No real time is in it, so the same scenario and the same host give the same bytes.
///
/// A track holds 100,000 lines or 16 MiB, and as much of reads; one more line says that it went on.
///
/// Threads: any.
class EventLog {
  public:
    static constexpr size_t kMaxLines = 100000;
    static constexpr size_t kMaxBytes = size_t{16} * 1024 * 1024;

    /// Where a line stands.
    struct Place {
        size_t track = 0;
        size_t line = 0;
    };

    /// @param ports  names, in the order of their tracks
    explicit EventLog(const std::vector<std::string>& ports);

    /// What the scenario's time brought, at the time at which it was to be.
    Place NoteTime(ScenarioTime time, const std::string& event);
    Place NoteCommand(const std::string& event);

    /// What the host did.
    /// @param port  the port's place among the names; as many as there are: the enumerations
    Place NotePort(size_t port, const std::string& event);

    /// What reads of a port came to.
    Place NoteRead(size_t port, const std::string& event);

    /// Says that the event of a line failed.
    void SetError(Place place, const std::string& error);

    bool IsEmpty() const;
    std::string Text() const;

  private:
    struct Line {
        std::optional<ScenarioTime> time;
        std::string event;
        std::string error;
    };

    struct Track {
        std::string name;
        std::vector<Line> lines;
        size_t bytes = 0;
        bool isFull = false;
        bool goesOn = false; // with the numbers of the one before
    };

    Place Note(size_t track, std::optional<ScenarioTime> time, const std::string& event);
    static void AppendLines(const Track& track, size_t before, std::string& text);

    mutable std::mutex m_Mutex; // guards everything below
    std::vector<Track> m_Tracks;
};

/// A text in double quotes as JSON has it; bytes from 0x80 on pass unchanged.
std::string QuoteJson(const std::string& text);

#endif

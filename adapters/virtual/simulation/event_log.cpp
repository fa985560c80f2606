// SPDX-License-Identifier: MIT
#include "adapters/virtual/simulation/event_log.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

constexpr size_t kTimeTrack = 0;
constexpr size_t kCommandTrack = 1;
constexpr size_t kFirstPort = 2;

std::string Escape(unsigned char byte) {
    static constexpr const char* kDigits = "0123456789abcdef";
    return std::string("\\u00") + kDigits[byte >> 4U] + kDigits[byte & 15U];
}

std::string Line(const std::string& track, const std::string& place, const std::string& event) {
    return "{\"track\":" + QuoteJson(track) + "," + place + "\"event\":" + QuoteJson(event);
}

} // namespace

std::string QuoteJson(const std::string& text) {
    std::string quoted = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7f) {
            quoted += Escape(byte);
            continue;
        }
        if (character == '"' || character == '\\') {
            quoted += '\\';
        }
        quoted += character;
    }
    return quoted + "\"";
}

EventLog::EventLog(const std::vector<std::string>& ports) {
    m_Tracks.resize(kFirstPort + 2 * ports.size() + 1);
    m_Tracks[kTimeTrack].name = "time";
    m_Tracks[kCommandTrack].name = "commands";
    for (size_t i = 0; i < ports.size(); ++i) {
        m_Tracks[kFirstPort + 2 * i].name = ports[i];
        m_Tracks[kFirstPort + 2 * i + 1].name = ports[i];
        m_Tracks[kFirstPort + 2 * i + 1].goesOn = true;
    }
    m_Tracks.back().name = "enumeration";
}

EventLog::Place EventLog::NoteTime(ScenarioTime time, const std::string& event) {
    return Note(kTimeTrack, time, event);
}

EventLog::Place EventLog::NoteCommand(const std::string& event) {
    return Note(kCommandTrack, std::nullopt, event);
}

EventLog::Place EventLog::NotePort(size_t port, const std::string& event) {
    return Note(kFirstPort + 2 * port, std::nullopt, event);
}

EventLog::Place EventLog::NoteRead(size_t port, const std::string& event) {
    return Note(kFirstPort + 2 * port + 1, std::nullopt, event);
}

void EventLog::SetError(Place place, const std::string& error) {
    const Lock lock(m_Mutex);
    Track& track = m_Tracks[place.track];
    if (place.line < track.lines.size()) {
        track.lines[place.line].error = error;
    }
}

bool EventLog::IsEmpty() const {
    const Lock lock(m_Mutex);
    for (const Track& track : m_Tracks) {
        if (!track.lines.empty()) {
            return false;
        }
    }
    return true;
}

std::string EventLog::Text() const {
    const Lock lock(m_Mutex);
    std::string text;
    size_t before = 0;
    for (const Track& track : m_Tracks) {
        AppendLines(track, track.goesOn ? before : 0, text);
        before = track.lines.size();
    }
    return text;
}

// The place of a line that is not kept is one that no line has.
EventLog::Place EventLog::Note(size_t number, std::optional<ScenarioTime> time,
                               const std::string& event) {
    const Lock lock(m_Mutex);
    Track& track = m_Tracks[number];
    const Place place{number, track.lines.size()};
    track.isFull =
        track.isFull || track.lines.size() == kMaxLines || track.bytes + event.size() > kMaxBytes;
    if (track.isFull) {
        return {number, kMaxLines};
    }
    track.bytes += event.size();
    track.lines.push_back({time, event, ""});
    return place;
}

void EventLog::AppendLines(const Track& track, size_t before, std::string& text) {
    for (size_t i = 0; i < track.lines.size(); ++i) {
        const auto& [time, event, error] = track.lines[i];
        const std::string place = time ? "\"at_us\":" + std::to_string(time->count()) + ","
                                       : "\"n\":" + std::to_string(before + i + 1) + ",";
        text += ::Line(track.name, place, event);
        text += error.empty() ? "}\n" : ",\"error\":" + QuoteJson(error) + "}\n";
    }
    if (track.isFull) {
        text += ::Line(track.name, "", "there was more, which is not kept") + "}\n";
    }
}

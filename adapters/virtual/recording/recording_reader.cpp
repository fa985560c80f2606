// SPDX-License-Identifier: MIT
#include "adapters/virtual/recording/recording_reader.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/language/scenario_names.h"
#include "adapters/virtual/recording/recorded_call.h"
#include "adapters/virtual/recording/recorded_devices.h"
#include "adapters/virtual/recording/recorded_ports.h"

namespace {

// Each port that is left out is named up to here.
constexpr size_t kMaxNotes = 16;

// A host may be slower than the recorded one.
constexpr std::chrono::seconds kAfterLastCall{1};

class Reader {
  public:
    Reader(const std::string& text, const std::string& fileName)
        : m_Text(text), m_FileName(fileName) {}

    Recording Read() {
        try {
            ReadLines();
            return Finish();
        } catch (const std::runtime_error& error) {
            throw std::runtime_error(Here() + error.what());
        }
    }

  private:
    void ReadLines() {
        CheckRecordingHeader(NextLine());
        while (!m_Text.empty()) {
            const bool isLast = m_Text.find('\n') == std::string_view::npos;
            const std::string line = NextLine();
            try {
                See(ReadRecordedCall(line));
            } catch (const std::runtime_error& error) {
                if (!isLast) {
                    throw;
                }
                Note(std::string("the recording ends within a line, which is left out: ") +
                     error.what());
            }
        }
    }

    std::string NextLine() {
        const size_t end = std::min(m_Text.find('\n'), m_Text.size());
        std::string line(m_Text.substr(0, end));
        m_Text.remove_prefix(std::min(end + 1, m_Text.size()));
        ++m_Line;
        return line;
    }

    void See(const RecordedCall& call) {
        if (call.call.empty()) {
            return;
        }
        if (!m_Start) {
            m_Start = call.start;
        }
        m_Length = std::max(m_Length, call.start - *m_Start);
        m_Ports.See(call);
        if (call.call == "enumerate" && call.succeeded) {
            m_Devices.See(call.devices, std::max(call.start - *m_Start, ScenarioTime(0)), m_Line);
        }
    }

    Recording Finish() {
        m_Line = 1;
        Recording recording;
        recording.scenario.description = "a recording";
        recording.scenario.end = m_Length + kAfterLastCall;
        recording.scenario.devices = m_Devices.TakeDevices();
        recording.scenario.events = m_Devices.TakeEvents();
        if (recording.scenario.devices.empty()) {
            throw std::runtime_error("the recording has no device; the host never had a list");
        }
        for (DeviceSpec& device : recording.scenario.devices) {
            FillPorts(device);
        }
        NotePortsLeftOut();
        recording.notes = std::move(m_Notes);
        return recording;
    }

    void FillPorts(DeviceSpec& device) {
        m_Names.AddDevice(device);
        for (PortSpec& port : device.ports) {
            m_Names.AddPort(device.name, port);
            port.openings = m_Ports.Take(port.name);
        }
    }

    void NotePortsLeftOut() {
        for (const std::string& port : m_Devices.MovedPorts()) {
            Note("port '" + Printable(port) +
                 "' was a second device's as well; it is played as the first one's only");
        }
        for (const std::string& port : m_Ports.Left()) {
            Note("port '" + Printable(port) + "' was in no list; it is left out");
        }
    }

    void Note(const std::string& text) {
        if (m_Notes.size() < kMaxNotes) {
            m_Notes.push_back(Here() + text);
        }
    }

    std::string Here() const { return m_FileName + ":" + std::to_string(m_Line) + ": "; }

    std::string_view m_Text; // what is left of it
    const std::string& m_FileName;
    size_t m_Line = 0;
    std::optional<ScenarioTime> m_Start;
    ScenarioTime m_Length{0};
    RecordedDevices m_Devices;
    RecordedPorts m_Ports;
    ScenarioNames m_Names;
    std::vector<std::string> m_Notes;
};

} // namespace

bool IsRecording(const std::string& text) {
    return IsRecordingHeader(std::string_view(text).substr(0, text.find('\n')));
}

Recording ReadRecording(const std::string& text, const std::string& fileName) {
    return Reader(text, fileName).Read();
}

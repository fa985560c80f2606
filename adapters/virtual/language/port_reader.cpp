// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/port_reader.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/text_file.h"
#include "adapters/virtual/language/scenario_bounds.h"

namespace {

constexpr size_t kMaxPortName = OS_ADAPT_PORT_NAME_SIZE - 1;
constexpr size_t kMaxMode = 63;
constexpr size_t kMaxSend = 1024; // fits in an empty terminal, so that it goes out whole
constexpr size_t kMaxReply = 1024;
constexpr size_t kMaxPath = 4095;
constexpr long kMaxEveryMs = 3600000;
constexpr long kMaxBaud = 10000000;

struct FarEndName {
    const char* name;
    FarEndKind kind;
};

constexpr FarEndName kFarEnds[] = {
    {"external", FarEndKind::External},  {"silent", FarEndKind::Silent},
    {"echo", FarEndKind::Echo},          {"at", FarEndKind::At},
    {"periodic", FarEndKind::Periodic},  {"scripted", FarEndKind::Scripted},
    {"recording", FarEndKind::Recording}};

std::string Capitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    return text;
}

void ReadAt(TomlTable& table, PortSpec& port) {
    port.echo = table.Flag("echo", true);
    for (const auto& [command, text] : table.Texts("replies", kMaxReply)) {
        port.replies[Capitals(command)] = text;
    }
}

std::optional<long> ReadBaud(TomlTable& table) {
    const long baud = table.Number("baud", 0, 1, kMaxBaud);
    return baud == 0 ? std::nullopt : std::make_optional(baud);
}

const PortSpec* FindPort(const Scenario& scenario, const std::string& name) {
    for (const DeviceSpec& device : scenario.devices) {
        for (const PortSpec& port : device.ports) {
            if (port.name == name) {
                return &port;
            }
        }
    }
    return nullptr;
}

} // namespace

PortSpec PortReader::Read(TomlTable& table) {
    PortSpec port;
    port.name = table.Name("name", kMaxPortName);
    port.mode = table.OptionalName("mode", kMaxMode);
    port.present = table.Flag("present", true);
    port.proposedId = static_cast<int32_t>(table.Number("id", 0, 0, INT32_MAX));
    port.baud = ReadBaud(table);
    port.farEnd = ReadFarEnd(table);
    if (port.farEnd == FarEndKind::At) {
        ReadAt(table, port);
    } else if (port.farEnd == FarEndKind::Periodic) {
        port.send = table.Data("send", kMaxSend);
        port.everyMs = static_cast<int>(table.Number("every_ms", 1000, 1, kMaxEveryMs));
    } else if (port.farEnd == FarEndKind::Recording) {
        ReadRecorded(table, port);
    }
    return port;
}

FarEndKind PortReader::ReadFarEnd(TomlTable& table) {
    const std::string name = table.OptionalName("far", kMaxMode);
    std::string known;
    for (const FarEndName& farEnd : kFarEnds) {
        if (name == farEnd.name) {
            return farEnd.kind;
        }
        known += std::string(" ") + farEnd.name;
    }
    if (!name.empty()) {
        m_Mistake.Note(table.Where("far"), "'far' must be one of:" + known);
    }
    return FarEndKind::External;
}

void PortReader::ReadRecorded(TomlTable& table, PortSpec& port) {
    const std::string file = table.Name("file", kMaxPath);
    const std::string given = table.OptionalName("port", kMaxPortName);
    const std::string& name = given.empty() ? port.name : given;
    if (m_Mistake.IsNoted()) {
        return;
    }
    try {
        const PortSpec* found = FindPort(Find(file).scenario, name);
        if (found == nullptr) {
            throw std::runtime_error("recording '" + Printable(file) + "' has no port '" +
                                     Printable(name) + "'");
        }
        port.openings = found->openings;
    } catch (const std::runtime_error& error) {
        m_Mistake.Note(table.Where("file"), error.what());
    }
}

const Recording& PortReader::Find(const std::string& file) {
    const std::string path = file.front() == '/' ? file : m_Folder + file;
    const auto [entry, isNew] = m_Recordings.insert({path, {}});
    if (isNew) {
        Load(path, entry->second);
    }
    return entry->second;
}

void PortReader::Load(const std::string& path, Recording& recording) {
    const TextFile file = ReadTextFile(path, kMaxRecordingSize);
    if (!file.error.empty()) {
        throw std::runtime_error("recording '" + Printable(path) + "': " + file.error);
    }
    m_Size += file.text.size();
    if (m_Size > kMaxRecordingSize) {
        throw std::runtime_error("the recordings together are " + TooLargeText(kMaxRecordingSize));
    }
    recording = ReadRecording(file.text, path);
    m_Notes.insert(m_Notes.end(), recording.notes.begin(), recording.notes.end());
}

size_t FarEndSize(const PortSpec& port) {
    size_t size = port.send.size();
    for (const auto& [command, text] : port.replies) {
        size += command.size() + text.size();
    }
    for (const RecordedOpening& opening : port.openings) {
        size += sizeof opening + opening.fromHost.size();
        for (const RecordedPiece& piece : opening.pieces) {
            size += sizeof piece + piece.bytes.size();
        }
    }
    return size;
}

// SPDX-License-Identifier: MIT
#include <algorithm>
#include <stdexcept>
#include <utility>

#include "OSAdapt.h"
#include "adapters/shared/toml_table.h"
#include "adapters/shared/toml_text.h"
#include "adapters/virtual/language/event_values.h"
#include "adapters/virtual/language/port_reader.h"
#include "adapters/virtual/language/scenario_bounds.h"
#include "adapters/virtual/language/scenario_names.h"
#include "adapters/virtual/language/scenario_scripts.h"
#include "adapters/virtual/recording/recording_reader.h"

namespace {

constexpr size_t kMaxDeviceText = OS_ADAPT_DEVICE_TEXT_SIZE - 1;
constexpr size_t kMaxPortName = OS_ADAPT_PORT_NAME_SIZE - 1;
constexpr size_t kMaxMode = 63;
constexpr size_t kMaxDescription = 200;

// A table that may stand for several devices or ports, with what it says.
template <typename Spec> struct Row {
    TomlTable table;
    std::optional<size_t> count;
    Spec spec;
    Sentences script; // of a port
};

std::string FolderOf(const std::string& fileName) {
    return fileName.substr(0, fileName.rfind('/') + 1); // npos + 1 is 0
}

class Reader {
  public:
    explicit Reader(const std::string& fileName)
        : m_PortReader(FolderOf(fileName), m_Mistake), m_Scripts(m_Mistake) {}

    Scenario Read(const toml::table& root) {
        TomlTable table(root, "scenario", m_Mistake);
        m_Scenario.description = table.OptionalName("description", kMaxDescription);
        m_Scenario.seed =
            static_cast<uint64_t>(table.Number("seed", 1, 0, static_cast<long>(kMaxScenarioSeed)));
        m_Scenario.speed = table.Decimal("speed", 1, kMinScenarioSpeed, kMaxScenarioSpeed);
        m_Scenario.end = ReadEnd(table);
        m_Scripts.Add(table, "events", {ReadSentences(table, "events"), "", {}});
        if (const toml::array* devices = table.Tables("device", kMaxDevices)) {
            for (const toml::node& device : *devices) {
                ReadDevice(*device.as_table());
            }
        }
        table.RefuseOtherKeys();
        m_Scenario.events = m_Scripts.ReadEvents(m_Names);
        return std::move(m_Scenario);
    }

    Mistake& FirstMistake() { return m_Mistake; }
    const std::vector<std::string>& Notes() const { return m_PortReader.Notes(); }

  private:
    using DeviceRow = Row<DeviceSpec>;
    using PortRow = Row<PortSpec>;

    std::optional<ScenarioTime> ReadEnd(TomlTable& table) {
        const std::string text = table.OptionalName("end", kMaxMode);
        const std::optional<ScenarioTime> end = ReadTime(text);
        if (!text.empty() && !end) {
            m_Mistake.Note(table.Where("end"), "'end' must be a time such as 10s, 500ms or 1.5s");
        }
        return end;
    }

    std::optional<size_t> ReadCount(TomlTable& table, size_t most) {
        const long count = table.Number("count", 0, 1, static_cast<long>(most));
        return count == 0 ? std::nullopt : std::make_optional(static_cast<size_t>(count));
    }

    void ReadDevice(const toml::table& source) {
        DeviceRow row{TomlTable(source, "device", m_Mistake), {}, {}, {}};
        TomlTable& table = row.table;
        row.spec.name = table.Name("name", kMaxDeviceText);
        row.count = ReadCount(table, kMaxDevices);
        row.spec.text = table.OptionalName("text", kMaxDeviceText);
        row.spec.mode = table.OptionalName("mode", kMaxMode);
        row.spec.present = table.Flag("present", true);
        NeedPlace(row, "{n}", row.count);
        std::vector<PortRow> ports;
        if (const toml::array* tables = table.Tables("port", kMaxPortsOfDevice)) {
            for (const toml::node& port : *tables) {
                ports.push_back(ReadPort(*port.as_table(), row.count));
            }
        }
        table.RefuseOtherKeys();
        CheckMode(row, ports);
        AddCopies(row, ports);
    }

    PortRow ReadPort(const toml::table& source, const std::optional<size_t>& deviceCount) {
        PortRow row{TomlTable(source, "port", m_Mistake), {}, {}, {}};
        row.spec = m_PortReader.Read(row.table);
        row.count = ReadCount(row.table, kMaxPortsOfDevice);
        row.script = ReadSentences(row.table, "script");
        row.table.RefuseOtherKeys();
        NeedPlace(row, "{n}", deviceCount);
        NeedPlace(row, "{p}", row.count);
        return row;
    }

    template <typename Spec>
    void NeedPlace(const Row<Spec>& row, const std::string& place,
                   const std::optional<size_t>& count) {
        if (count.value_or(1) > 1 && row.spec.name.find(place) == std::string::npos) {
            m_Mistake.Note(row.table.Where("name"),
                           "'name' must have " + place + " in it where there are several");
        }
    }

    void CheckMode(const DeviceRow& row, const std::vector<PortRow>& ports) {
        if (std::none_of(ports.begin(), ports.end(),
                         [&](const PortRow& port) { return IsInMode(port.spec, row.spec.mode); })) {
            m_Mistake.Note(row.table.Where("mode"),
                           "device '" + row.spec.name + "' has no port in the mode it starts in");
        }
    }

    // Mistakes first: nothing is copied that is too much.
    void AddCopies(const DeviceRow& row, const std::vector<PortRow>& ports) {
        CheckBounds(row, ports);
        if (m_Mistake.IsNoted()) {
            return;
        }
        for (size_t n = 1; n <= row.count.value_or(1); ++n) {
            const CopyNumbers numbers{row.count ? std::make_optional(n) : std::nullopt, {}};
            AddDevice(row, ports, numbers);
        }
    }

    void CheckBounds(const DeviceRow& row, const std::vector<PortRow>& ports) {
        const size_t copies = row.count.value_or(1);
        size_t portsEach = 0;
        for (const PortRow& port : ports) {
            portsEach += port.count.value_or(1);
            m_FarEndBytes += FarEndSize(port.spec) * port.count.value_or(1) * copies;
        }
        m_Devices += copies;
        m_Ports += portsEach * copies;
        CheckBound(row, m_Devices, kMaxDevices, "scenario has", "devices");
        CheckBound(row, portsEach, kMaxPortsOfDevice, "device has", "ports");
        CheckBound(row, m_Ports, kMaxPorts, "scenario has", "ports");
        CheckBound(row, m_FarEndBytes, kMaxFarEndBytes, "far ends have", "bytes of texts");
    }

    void CheckBound(const DeviceRow& row, size_t number, size_t most, const char* who,
                    const char* what) {
        if (number > most) {
            m_Mistake.Note(row.table.Where("count"),
                           std::string(who) + " more than " + std::to_string(most) + " " + what);
        }
    }

    void AddDevice(const DeviceRow& row, const std::vector<PortRow>& ports,
                   const CopyNumbers& numbers) {
        DeviceSpec device = row.spec;
        device.name = CopyName(row.table, "name", row.spec.name, kMaxDeviceText, numbers);
        device.text = CopyName(row.table, "text", row.spec.text, kMaxDeviceText, numbers);
        NoteIfThrown(row.table.Where("name"), [&] { m_Names.AddDevice(device); });
        for (const PortRow& port : ports) {
            for (size_t p = 1; p <= port.count.value_or(1); ++p) {
                const auto number = port.count ? std::make_optional(p) : std::nullopt;
                device.ports.push_back(CopyPort(port, device.name, {numbers.device, number}));
            }
        }
        m_Scenario.devices.push_back(std::move(device));
    }

    PortSpec CopyPort(const PortRow& row, const std::string& device, const CopyNumbers& numbers) {
        PortSpec port = row.spec;
        port.name = CopyName(row.table, "name", row.spec.name, kMaxPortName, numbers);
        NoteIfThrown(row.table.Where("name"), [&] { m_Names.AddPort(device, port); });
        NoteIfThrown(row.table.Where("id"), [&] { m_Names.AddPortId(port); });
        m_Scripts.Add(row.table, "script", {row.script, port.name, numbers});
        return port;
    }

    std::string CopyName(const TomlTable& table, const char* key, const std::string& name,
                         size_t most, const CopyNumbers& numbers) {
        std::string copy = NameOfCopy(name, numbers);
        if (copy.size() > most) {
            m_Mistake.Note(table.Where(key), "'" + std::string(key) + "' must have at most " +
                                                 std::to_string(most) + " bytes, not " +
                                                 std::to_string(copy.size()));
        }
        return copy;
    }

    template <typename Check> void NoteIfThrown(const toml::source_region& where, Check check) {
        try {
            check();
        } catch (const std::runtime_error& error) {
            m_Mistake.Note(where, error.what());
        }
    }

    Mistake m_Mistake;
    PortReader m_PortReader;
    Scenario m_Scenario;
    ScenarioNames m_Names;
    ScenarioScripts m_Scripts;
    size_t m_Devices = 0;
    size_t m_Ports = 0;
    size_t m_FarEndBytes = 0;
};

ScenarioResult ReadToml(const std::string& text, const std::string& fileName) {
    const toml::table root = ParseToml(text, fileName);
    Reader reader(fileName);
    Scenario scenario = reader.Read(root);
    if (reader.FirstMistake().IsNoted()) {
        return {{}, reader.FirstMistake().Text(fileName), {}};
    }
    return {std::move(scenario), "", reader.Notes()};
}

} // namespace

ScenarioResult ReadScenario(const std::string& text, const std::string& fileName) {
    try {
        if (!IsRecording(text)) {
            return ReadToml(text, fileName);
        }
        Recording recording = ReadRecording(text, fileName);
        return {std::move(recording.scenario), "", std::move(recording.notes)};
    } catch (const std::runtime_error& error) {
        return {{}, error.what(), {}};
    }
}

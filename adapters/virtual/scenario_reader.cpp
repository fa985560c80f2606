// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cctype>
#include <set>
#include <stdexcept>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/shared/toml_table.h"
#include "adapters/shared/toml_text.h"
#include "adapters/virtual/scenario.h"

namespace {

constexpr size_t kMaxDeviceText = OS_ADAPT_DEVICE_TEXT_SIZE - 1;
constexpr size_t kMaxPortName = OS_ADAPT_PORT_NAME_SIZE - 1;
constexpr size_t kMaxMode = 63;
constexpr size_t kMaxSend = 1024; // fits in an empty terminal, so that it goes out whole
constexpr size_t kMaxReply = 1024;
constexpr long kMaxEveryMs = 3600000;

struct FarEndName {
    const char* name;
    FarEndKind kind;
};

constexpr FarEndName kFarEnds[] = {{"external", FarEndKind::External},
                                   {"silent", FarEndKind::Silent},
                                   {"echo", FarEndKind::Echo},
                                   {"at", FarEndKind::At},
                                   {"periodic", FarEndKind::Periodic}};

std::string Capitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
    return text;
}

class Reader {
  public:
    Scenario Read(const toml::table& root) {
        TomlTable table(root, "scenario", m_Mistake);
        Scenario scenario;
        if (const toml::array* devices = table.Tables("device", OS_ADAPT_MAX_DEVICES)) {
            for (const toml::node& device : *devices) {
                scenario.devices.push_back(ReadDevice(*device.as_table()));
            }
        }
        table.RefuseOtherKeys();
        return scenario;
    }

    Mistake& FirstMistake() { return m_Mistake; }

  private:
    DeviceSpec ReadDevice(const toml::table& source) {
        TomlTable table(source, "device", m_Mistake);
        DeviceSpec device;
        device.name = table.Name("name", kMaxDeviceText);
        if (!m_DeviceNames.insert(device.name).second) {
            m_Mistake.Note(table.Where("name"), "device '" + device.name + "' is there twice");
        }
        device.text = table.OptionalName("text", kMaxDeviceText);
        device.mode = table.OptionalName("mode", kMaxMode);
        device.present = table.Flag("present", true);
        if (const toml::array* ports = table.Tables("port", OS_ADAPT_MAX_PORTS)) {
            for (const toml::node& port : *ports) {
                device.ports.push_back(ReadPort(*port.as_table()));
            }
        }
        table.RefuseOtherKeys();
        CheckMode(device, table);
        return device;
    }

    void CheckMode(const DeviceSpec& device, const TomlTable& table) {
        if (std::none_of(device.ports.begin(), device.ports.end(),
                         [&](const PortSpec& port) { return IsInMode(port, device.mode); })) {
            m_Mistake.Note(table.Where("mode"),
                           "device '" + device.name + "' has no port in the mode it starts in");
        }
    }

    PortSpec ReadPort(const toml::table& source) {
        TomlTable table(source, "port", m_Mistake);
        PortSpec port;
        port.name = table.Name("name", kMaxPortName);
        port.mode = table.OptionalName("mode", kMaxMode);
        port.proposedId = static_cast<int32_t>(table.Number("id", 0, 0, INT32_MAX));
        port.farEnd = ReadFarEnd(table);
        if (port.farEnd == FarEndKind::At) {
            ReadAt(table, port);
        }
        if (port.farEnd == FarEndKind::Periodic) {
            port.send = table.Data("send", kMaxSend);
            port.everyMs = static_cast<int>(table.Number("every_ms", 1000, 1, kMaxEveryMs));
        }
        table.RefuseOtherKeys();
        CheckPort(port, table);
        return port;
    }

    static void ReadAt(TomlTable& table, PortSpec& port) {
        port.echo = table.Flag("echo", true);
        for (const auto& [command, text] : table.Texts("replies", kMaxReply)) {
            port.replies[Capitals(command)] = text;
        }
    }

    FarEndKind ReadFarEnd(TomlTable& table) {
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

    void CheckPort(const PortSpec& port, const TomlTable& table) {
        if (!m_PortNames.insert(port.name).second) {
            m_Mistake.Note(table.Where("name"), "port '" + port.name + "' is there twice");
        }
        if (!m_LinkNames.insert(LinkName(port.name)).second) {
            m_Mistake.Note(table.Where("name"),
                           "port '" + port.name +
                               "' has the same link name as another: " + LinkName(port.name));
        }
        if (port.proposedId != 0 && !m_Ids.insert(port.proposedId).second) {
            m_Mistake.Note(table.Where("id"),
                           "id " + std::to_string(port.proposedId) + " is there twice");
        }
    }

    Mistake m_Mistake;
    std::set<std::string> m_DeviceNames;
    std::set<std::string> m_PortNames;
    std::set<std::string> m_LinkNames;
    std::set<int32_t> m_Ids;
};

} // namespace

ScenarioResult ReadScenario(const std::string& text, const std::string& fileName) {
    try {
        const toml::table root = ParseToml(text, fileName);
        Reader reader;
        Scenario scenario = reader.Read(root);
        if (reader.FirstMistake().IsNoted()) {
            return {{}, reader.FirstMistake().Text(fileName)};
        }
        return {std::move(scenario), ""};
    } catch (const std::runtime_error& error) {
        return {{}, error.what()};
    }
}

// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cctype>
#include <set>
#include <string_view>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/scenario.h"
#include "adapters/virtual/scenario_table.h"

namespace {

constexpr size_t kMaxDeviceText = OS_ADAPT_DEVICE_TEXT_SIZE - 1;
constexpr size_t kMaxPortName = OS_ADAPT_PORT_NAME_SIZE - 1;
constexpr size_t kMaxMode = 63;
constexpr size_t kMaxSend = 1024; // fits in an empty terminal, so that it goes out whole
constexpr size_t kMaxReply = 1024;
constexpr long kMaxEveryMs = 3600000;
constexpr size_t kMaxLine = 4096;

// The parser makes a table for each dot of "a.b.c" and recurses through them when it frees them.
// Dots that stand side by side, which no key can have, count as one.
constexpr long kMaxDots = 64;

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

long CountDots(std::string_view line) {
    long count = 0;
    char before = ' ';
    for (const char character : line) {
        count += character == '.' && before != '.' ? 1 : 0;
        before = character;
    }
    return count;
}

std::string LineMistake(std::string_view line) {
    if (line.size() > kMaxLine) {
        return "the line has more than " + std::to_string(kMaxLine) + " bytes";
    }
    if (CountDots(line) > kMaxDots) {
        return "the line has more than " + std::to_string(kMaxDots) + " dots";
    }
    return "";
}

// Finds what the parser must not be given.
// @return "line: reason", empty when there is nothing.
std::string TextMistake(std::string_view text) {
    for (size_t number = 1; !text.empty(); ++number) {
        const size_t end = std::min(text.find('\n'), text.size());
        if (const std::string reason = LineMistake(text.substr(0, end)); !reason.empty()) {
            return std::to_string(number) + ": " + reason;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return "";
}

class Reader {
  public:
    Scenario Read(const toml::table& root) {
        ScenarioTable table(root, "scenario", m_Mistake);
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
        ScenarioTable table(source, "device", m_Mistake);
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

    void CheckMode(const DeviceSpec& device, const ScenarioTable& table) {
        if (std::none_of(device.ports.begin(), device.ports.end(),
                         [&](const PortSpec& port) { return IsInMode(port, device.mode); })) {
            m_Mistake.Note(table.Where("mode"),
                           "device '" + device.name + "' has no port in the mode it starts in");
        }
    }

    PortSpec ReadPort(const toml::table& source) {
        ScenarioTable table(source, "port", m_Mistake);
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

    static void ReadAt(ScenarioTable& table, PortSpec& port) {
        port.echo = table.Flag("echo", true);
        for (const auto& [command, text] : table.Texts("replies", kMaxReply)) {
            port.replies[Capitals(command)] = text;
        }
    }

    FarEndKind ReadFarEnd(ScenarioTable& table) {
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

    void CheckPort(const PortSpec& port, const ScenarioTable& table) {
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
    if (const std::string mistake = TextMistake(text); !mistake.empty()) {
        return {{}, fileName + ":" + mistake};
    }
    try {
        const toml::table root = toml::parse(text);
        Reader reader;
        Scenario scenario = reader.Read(root);
        if (reader.FirstMistake().IsNoted()) {
            return {{}, reader.FirstMistake().Text(fileName)};
        }
        return {std::move(scenario), ""};
    } catch (const toml::parse_error& error) {
        Mistake mistake;
        mistake.Note(error.source(), std::string(error.description()));
        return {{}, mistake.Text(fileName)};
    }
}

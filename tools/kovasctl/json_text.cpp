// SPDX-License-Identifier: MIT
#include "tools/kovasctl/json_text.h"

#include <nlohmann/json.hpp>

#include "tools/kovasctl/time_text.h"

namespace {

using Json = nlohmann::ordered_json;

// Grows when a member is removed or changes its meaning; members may be added at any time.
constexpr int kSchema = 1;

std::string Line(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json ToJson(const Device& device) {
    Json ports = Json::array();
    for (const Port& port : device.ports) {
        ports.push_back({{"id", port.id}, {"name", port.name}, {"type", port.type}});
    }
    return {{"name", device.name}, {"text", device.text}, {"ports", ports}};
}

const char* EventName(Change::Kind kind) {
    switch (kind) {
    case Change::Kind::DevicePresent:
        return "device-present";
    case Change::Kind::DeviceAdded:
        return "device-added";
    case Change::Kind::DeviceRemoved:
        return "device-removed";
    case Change::Kind::PortAdded:
        return "port-added";
    case Change::Kind::PortRemoved:
        return "port-removed";
    }
    return "";
}

const char* LevelName(Finding::Level level) {
    switch (level) {
    case Finding::Level::Good:
        return "good";
    case Finding::Level::Note:
        return "note";
    case Finding::Level::Problem:
        return "problem";
    }
    return "";
}

} // namespace

std::string DevicesAsJson(const Snapshot& snapshot) {
    Json devices = Json::array();
    for (const Device& device : snapshot.devices) {
        devices.push_back(ToJson(device));
    }
    return Line({{"schema", kSchema}, {"devices", devices}});
}

std::string ChangeAsJson(const Change& change, std::chrono::system_clock::time_point time) {
    return Line({{"schema", kSchema},
                 {"time", TimeForPrograms(time)},
                 {"event", EventName(change.kind)},
                 {"device", ToJson(change.device)}});
}

std::string FindingsAsJson(const Findings& findings) {
    Json list = Json::array();
    for (const Finding& finding : findings.All()) {
        list.push_back({{"subject", finding.subject},
                        {"level", LevelName(finding.level)},
                        {"text", finding.text},
                        {"mend", finding.mend}});
    }
    return Line({{"schema", kSchema}, {"good", !findings.HasProblem()}, {"findings", list}});
}

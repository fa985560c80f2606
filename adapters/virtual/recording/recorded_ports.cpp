// SPDX-License-Identifier: MIT
#include "adapters/virtual/recording/recorded_ports.h"

#include <algorithm>
#include <utility>

void RecordedPorts::See(const RecordedCall& call) {
    if (call.port.empty()) {
        return;
    }
    Port& port = m_Ports[call.port];
    // The recording may have begun when the port was open already.
    if (call.call == "open" || port.openings.empty()) {
        Open(port, call);
    }
    if (call.call == "write") {
        Write(port, call);
    } else if (call.call == "read") {
        Read(port, call);
    }
}

std::vector<RecordedOpening> RecordedPorts::Take(const std::string& port) {
    const auto found = m_Ports.find(port);
    if (found == m_Ports.end()) {
        return {};
    }
    std::vector<RecordedOpening> openings = std::move(found->second.openings);
    m_Ports.erase(found);
    return openings;
}

std::vector<std::string> RecordedPorts::Left() const {
    std::vector<std::string> names;
    for (const auto& [name, port] : m_Ports) {
        names.push_back(name);
    }
    return names;
}

void RecordedPorts::Open(Port& port, const RecordedCall& call) {
    port.openings.emplace_back();
    port.cause = call.end;
}

void RecordedPorts::Write(Port& port, const RecordedCall& call) {
    port.openings.back().fromHost += call.data;
    port.cause = call.end;
}

// Calls of several threads may overlap, so a read can have begun before its cause was over.
void RecordedPorts::Read(Port& port, const RecordedCall& call) {
    RecordedOpening& opening = port.openings.back();
    const ScenarioTime delay = std::max(call.start - port.cause, ScenarioTime(0));
    opening.pieces.push_back({call.data, opening.fromHost.size(), delay});
    port.cause = std::max(call.start, port.cause);
}

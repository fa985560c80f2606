// SPDX-License-Identifier: MIT
#include "adapters/virtual/language/scenario_names.h"

#include <stdexcept>

#include "adapters/shared/adapter_log.h"

namespace {

[[noreturn]] void Fail(const std::string& reason) { throw std::runtime_error(reason); }

std::string Shown(const std::string& name) { return "'" + Printable(name) + "'"; }

} // namespace

void ScenarioNames::AddDevice(const DeviceSpec& device) {
    if (!m_Modes.insert({device.name, {device.mode}}).second) {
        Fail("device " + Shown(device.name) + " is there twice");
    }
}

void ScenarioNames::AddPort(const std::string& device, const PortSpec& port) {
    m_Modes[device].insert(port.mode);
    if (!m_Ports.insert(port.name).second) {
        Fail("port " + Shown(port.name) + " is there twice");
    }
    if (const std::string link = LinkName(port.name); !m_Links.insert(link).second) {
        Fail("port " + Shown(port.name) + " has the same link name as another: " + Printable(link));
    }
}

void ScenarioNames::AddPortId(const PortSpec& port) {
    if (port.proposedId != 0 && !m_Ids.insert(port.proposedId).second) {
        Fail("id " + std::to_string(port.proposedId) + " is there twice");
    }
}

void ScenarioNames::CheckEvent(const Event& event) const {
    if (!event.trigger.port.empty()) {
        NeedPort(event.trigger.port);
    }
    CheckTarget(event.action);
}

void ScenarioNames::CheckTarget(const Action& action) const {
    switch (action.kind) {
    case ActionKind::Plug:
    case ActionKind::Pull:
    case ActionKind::Replug:
        NeedDevice(action.target);
        break;
    case ActionKind::Switch:
        NeedDevice(action.target);
        NeedMode(action.target, action.mode);
        break;
    default:
        if (!action.target.empty()) { // else it is about enumerations
            NeedPort(action.target);
        }
    }
}

void ScenarioNames::NeedDevice(const std::string& name) const {
    if (m_Modes.count(name) == 0) {
        Fail("no device " + Shown(name));
    }
}

void ScenarioNames::NeedPort(const std::string& name) const {
    if (m_Ports.count(name) == 0) {
        Fail("no port " + Shown(name));
    }
}

void ScenarioNames::NeedMode(const std::string& device, const std::string& mode) const {
    if (m_Modes.at(device).count(mode) == 0) {
        Fail("device " + Shown(device) + " has no port in mode " + Shown(mode));
    }
}

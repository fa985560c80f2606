// SPDX-License-Identifier: MIT
#include "adapters/virtual/recording/recorded_devices.h"

#include <stdexcept>

#include "adapters/virtual/language/scenario_bounds.h"

namespace {

struct Word {
    ActionKind kind;
    const char* word;
};

constexpr Word kWords[] = {{ActionKind::Plug, "plug "},
                           {ActionKind::Pull, "pull "},
                           {ActionKind::PlugPort, "plug-port "},
                           {ActionKind::UnplugPort, "unplug-port "}};

std::string InWords(ScenarioTime time, ActionKind kind, const std::string& target) {
    std::string text = "at " + std::to_string(time.count()) + "us ";
    for (const Word& each : kWords) {
        text += each.kind == kind ? each.word : "";
    }
    return text + "\"" + target + "\"";
}

} // namespace

Event RecordedDevices::Moment::Make(ActionKind kind, const std::string& target) const {
    Event event;
    event.trigger.time = time;
    event.action.kind = kind;
    event.action.target = target;
    event.text = InWords(time, kind, target);
    event.line = line;
    return event;
}

void RecordedDevices::See(const std::vector<RecordedDevice>& devices, ScenarioTime time,
                          size_t line) {
    Moment moment{time, line, {}, {}};
    const size_t known = m_Devices.size();
    std::map<size_t, std::set<std::string>> seen;
    for (const RecordedDevice& device : devices) {
        for (const RecordedPort& port : OwnPorts(device)) {
            const size_t place = Find(device);
            seen[place].insert(port.name);
            AddPort(place, port, place >= known);
        }
    }
    for (size_t place = 0; place < m_Devices.size(); ++place) {
        const auto found = seen.find(place);
        found == seen.end() ? SeeNothing(place, moment) : SeeDevice(place, found->second, moment);
    }
    m_Events.insert(m_Events.end(), moment.gone.begin(), moment.gone.end());
    m_Events.insert(m_Events.end(), moment.come.begin(), moment.come.end());
    if (m_Events.size() > kMaxEvents) {
        throw std::runtime_error("more than " + std::to_string(kMaxEvents) + " events");
    }
    m_IsFirst = false;
}

// The ports that are no other device's. Where none is left there is no device either.
std::vector<RecordedPort> RecordedDevices::OwnPorts(const RecordedDevice& seen) {
    std::vector<RecordedPort> ports;
    for (const RecordedPort& port : seen.ports) {
        if (m_Owners.insert({port.name, seen.name}).first->second == seen.name) {
            ports.push_back(port);
        } else {
            m_Moved.insert(port.name);
        }
    }
    return ports;
}

size_t RecordedDevices::Find(const RecordedDevice& seen) {
    const auto [entry, isNew] = m_Places.insert({seen.name, m_Specs.size()});
    if (isNew) {
        if (m_Specs.size() == kMaxDevices) {
            throw std::runtime_error("more than " + std::to_string(kMaxDevices) + " devices");
        }
        m_Specs.push_back({seen.name, seen.text, "", m_IsFirst, {}});
        m_Devices.push_back({m_IsFirst, {}});
    }
    return entry->second;
}

void RecordedDevices::AddPort(size_t place, const RecordedPort& seen, bool present) {
    std::vector<PortSpec>& ports = m_Specs[place].ports;
    if (!m_Known.insert(seen.name).second) {
        return;
    }
    if (ports.size() == kMaxPortsOfDevice || m_Known.size() > kMaxPorts) {
        throw std::runtime_error("more than " + std::to_string(kMaxPortsOfDevice) +
                                 " ports of a device or " + std::to_string(kMaxPorts) + " in all");
    }
    PortSpec port;
    port.name = seen.name;
    port.present = present;
    port.farEnd = FarEndKind::Recording;
    // One that the system gave twice, at different times, the manager makes up.
    port.proposedId = seen.id > 0 && m_Ids.insert(seen.id).second ? seen.id : 0;
    ports.push_back(port);
    m_Devices[place].attached.push_back(present);
}

void RecordedDevices::SeeDevice(size_t place, const std::set<std::string>& ports, Moment& moment) {
    Device& device = m_Devices[place];
    const DeviceSpec& spec = m_Specs[place];
    for (size_t i = 0; i < spec.ports.size(); ++i) {
        const std::string& name = spec.ports[i].name;
        const bool isThere = ports.count(name) != 0;
        if (device.attached[i] != isThere) {
            const ActionKind kind = isThere ? ActionKind::PlugPort : ActionKind::UnplugPort;
            (isThere ? moment.come : moment.gone).push_back(moment.Make(kind, name));
        }
        device.attached[i] = isThere;
    }
    if (!device.present) {
        moment.come.push_back(moment.Make(ActionKind::Plug, spec.name));
    }
    device.present = true;
}

void RecordedDevices::SeeNothing(size_t place, Moment& moment) {
    if (m_Devices[place].present) {
        moment.gone.push_back(moment.Make(ActionKind::Pull, m_Specs[place].name));
    }
    m_Devices[place].present = false;
}

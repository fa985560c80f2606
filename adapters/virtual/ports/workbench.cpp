// SPDX-License-Identifier: MIT
#include "adapters/virtual/ports/workbench.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <utility>

#include "OSAdapt.h"
#include "adapters/shared/adapter_log.h"

namespace {

// Never starts again, so that a port of a new workbench is not taken for one of an earlier one.
std::atomic<uint64_t> g_LastArrival{0};

PortEntry MakeEntry(const Workbench::Port& port) {
    return {port.spec->name, port.spec->proposedId, port.arrival};
}

DeviceEntry MakeEntry(const Workbench::Device& device) {
    DeviceEntry entry{device.spec->name, device.spec->text, {}};
    for (const Workbench::Port& port : device.ports) {
        if (port.line != nullptr && port.listed) {
            entry.ports.push_back(MakeEntry(port));
        }
    }
    return entry;
}

bool IsThere(const Workbench::Port& port) { return port.line != nullptr; }

bool IsThere(const Workbench::Device& device) {
    return std::any_of(device.ports.begin(), device.ports.end(),
                       [](const Workbench::Port& port) { return IsThere(port); });
}

// @return how many there was no place for.
template <typename Thing> size_t GivePlacesTo(std::vector<Thing>& things, size_t places) {
    for (Thing& thing : things) {
        thing.listed = thing.listed && IsThere(thing);
        places -= thing.listed ? 1 : 0;
    }
    size_t left = 0;
    for (Thing& thing : things) {
        if (thing.listed || !IsThere(thing)) {
            continue;
        }
        thing.listed = places > 0;
        places -= thing.listed ? 1 : 0;
        left += thing.listed ? 0 : 1;
    }
    return left;
}

} // namespace

Workbench::Workbench(const Scenario& scenario) {
    for (const DeviceSpec& spec : scenario.devices) {
        Device device;
        device.spec = &spec;
        device.mode = spec.mode;
        for (const PortSpec& portSpec : spec.ports) {
            device.ports.emplace_back();
            device.ports.back().spec = &portSpec;
            device.ports.back().unplugged = !portSpec.present;
        }
        m_Devices.push_back(std::move(device));
    }
}

Workbench::Device* Workbench::FindDevice(const std::string& name) {
    const auto found = std::find_if(m_Devices.begin(), m_Devices.end(), [&](const Device& device) {
        return device.spec->name == name;
    });
    return found == m_Devices.end() ? nullptr : &*found;
}

Workbench::Port* Workbench::FindPort(const std::string& name) {
    for (Device& device : m_Devices) {
        for (Port& port : device.ports) {
            if (port.spec->name == name) {
                return &port;
            }
        }
    }
    return nullptr;
}

Workbench::Device* Workbench::DeviceOf(const Port& port) {
    const auto found = std::find_if(m_Devices.begin(), m_Devices.end(), [&](const Device& device) {
        return &port >= device.ports.data() && &port < device.ports.data() + device.ports.size();
    });
    return found == m_Devices.end() ? nullptr : &*found;
}

bool Workbench::BelongsHere(const Device& device, const Port& port) {
    return device.present && !port.unplugged && IsInMode(*port.spec, device.mode);
}

void Workbench::AddLines(Device& device, ScenarioTime now) {
    std::vector<Port*> added;
    try {
        for (Port& port : device.ports) {
            if (BelongsHere(device, port) && port.line == nullptr) {
                added.push_back(&port);
                port.line = std::make_unique<Line>(*port.spec, now);
                port.line->SetStalled(port.stalled);
                port.arrival = ++g_LastArrival;
            }
        }
    } catch (const std::exception& error) {
        for (Port* port : added) {
            port->line.reset();
        }
        throw std::runtime_error("device '" + device.spec->name + "': " + error.what());
    }
}

size_t Workbench::GivePlaces() {
    size_t left = GivePlacesTo(m_Devices, OS_ADAPT_MAX_DEVICES);
    for (Device& device : m_Devices) {
        left += GivePlacesTo(device.ports, OS_ADAPT_MAX_PORTS);
    }
    return left;
}

PortTable Workbench::Table() const {
    PortTable table;
    for (const Device& device : m_Devices) {
        DeviceEntry entry = MakeEntry(device);
        if (device.listed && !entry.ports.empty()) {
            table.push_back(std::move(entry));
        }
    }
    return table;
}

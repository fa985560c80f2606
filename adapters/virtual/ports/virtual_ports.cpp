// SPDX-License-Identifier: MIT
#include "adapters/virtual/ports/virtual_ports.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/control/control_words.h"

using Lock = std::lock_guard<std::mutex>;

namespace {

[[noreturn]] void Refuse(const std::string& reason) { throw std::runtime_error(reason); }

// A port that is there in every mode would let any misspelt one pass.
bool HasMode(const DeviceSpec& device, const std::string& mode) {
    return mode == device.mode ||
           std::any_of(device.ports.begin(), device.ports.end(),
                       [&](const PortSpec& port) { return port.mode == mode; });
}

std::string Describe(const Workbench::Device& device) {
    std::string text = "device " + QuoteWord(device.spec->name);
    text += device.present ? " present" : " absent";
    return device.mode.empty() ? text : text + " mode " + QuoteWord(device.mode);
}

std::string Describe(const Workbench::Port& port) {
    const std::string text = "port " + QuoteWord(port.spec->name);
    if (port.line == nullptr) {
        return text + (port.unplugged ? " unplugged" : " absent");
    }
    return text + " at " + port.line->FarPath() + (port.line->IsHostOpen() ? " open" : " closed") +
           (port.broken ? " broken" : "") + (port.stalled ? " stalled" : "");
}

} // namespace

VirtualPorts::VirtualPorts(Simulation& simulation, HandleTable& handles, StateNotifier& notifier,
                           ControlDirectory* links)
    : m_Simulation(simulation), m_Handles(handles), m_Notifier(notifier), m_Links(links),
      m_Bench(simulation.TheScenario()) {
    for (Device& device : m_Bench.Devices()) {
        device.present = device.spec->present;
        try {
            MakeLines(device);
        } catch (const std::runtime_error& error) {
            device.present = false;
            LogError(error.what());
        }
    }
    Publish();
}

uint64_t VirtualPorts::Plug(const std::string& deviceName) {
    const Lock lock(m_Mutex);
    Device& device = NeedDevice(deviceName);
    if (device.present) {
        Refuse("device is plugged in already");
    }
    device.present = true;
    try {
        return AddLines(device);
    } catch (const std::runtime_error&) {
        device.present = false;
        throw;
    }
}

uint64_t VirtualPorts::Pull(const std::string& deviceName) {
    const Lock lock(m_Mutex);
    TakeOut(NeedDevice(deviceName));
    return Publish();
}

uint64_t VirtualPorts::Replug(const std::string& deviceName) {
    const Lock lock(m_Mutex);
    Device& device = NeedDevice(deviceName);
    TakeOut(device);
    PublishGone();
    device.present = true;
    try {
        return AddLines(device);
    } catch (const std::runtime_error&) {
        device.present = false;
        throw;
    }
}

uint64_t VirtualPorts::SwitchMode(const std::string& deviceName, const std::string& mode) {
    const Lock lock(m_Mutex);
    Device& device = NeedDevice(deviceName);
    if (!HasMode(*device.spec, mode)) {
        Refuse("device has no port in that mode");
    }
    const std::string before = std::exchange(device.mode, mode);
    RemoveLines(device);
    PublishGone();
    try {
        return AddLines(device);
    } catch (const std::runtime_error&) {
        device.mode = before;
        PutBack(device);
        throw;
    }
}

uint64_t VirtualPorts::PlugPort(const std::string& portName) {
    const Lock lock(m_Mutex);
    Port& port = NeedPort(portName);
    if (!port.unplugged) {
        Refuse("port is not unplugged");
    }
    port.unplugged = false;
    try {
        return AddLines(*m_Bench.DeviceOf(port));
    } catch (const std::runtime_error&) {
        port.unplugged = true;
        throw;
    }
}

uint64_t VirtualPorts::UnplugPort(const std::string& portName) {
    const Lock lock(m_Mutex);
    Port& port = NeedPort(portName);
    if (port.unplugged) {
        Refuse("port is unplugged already");
    }
    port.unplugged = true;
    RemoveLines(*m_Bench.DeviceOf(port));
    return Publish();
}

void VirtualPorts::Send(const std::string& portName, const std::string& bytes) {
    const Lock lock(m_Mutex);
    if (const Port& port = NeedPort(portName); port.line != nullptr) {
        port.line->Send(bytes);
    }
}

void VirtualPorts::SetStalled(const std::string& portName, bool stalled) {
    const Lock lock(m_Mutex);
    Port& port = NeedPort(portName);
    port.stalled = stalled;
    if (port.line != nullptr) {
        port.line->SetStalled(stalled);
    }
}

void VirtualPorts::SetBroken(const std::string& portName, bool broken) {
    const Lock lock(m_Mutex);
    NeedPort(portName).broken = broken;
    if (broken) {
        m_Handles.KillPort(portName);
    }
}

std::string VirtualPorts::List() {
    const Lock lock(m_Mutex);
    std::string text;
    for (const Device& device : m_Bench.Devices()) {
        text += Describe(device) + "\n";
        for (const Port& port : device.ports) {
            text += Describe(port) + "\n";
        }
    }
    return text;
}

int VirtualPorts::Open(const std::string& portName) {
    const Lock lock(m_Mutex);
    const Port* port = m_Bench.FindPort(portName);
    if (port == nullptr || port->line == nullptr) {
        Refuse("it is not there; plug its device in");
    }
    if (port->broken) {
        Refuse("it is broken; mend it");
    }
    const int handle = m_Handles.Add(portName, port->line->OpenHostEnd());
    if (handle == OS_ADAPT_NO_HANDLE) {
        Refuse("all handle numbers are used; restart the host");
    }
    return handle;
}

void VirtualPorts::RemoveAll() {
    const Lock lock(m_Mutex);
    for (Device& device : m_Bench.Devices()) {
        device.present = false;
        RemoveLines(device);
    }
    m_Links = nullptr;
}

void VirtualPorts::Watch(PollSet& waiting) {
    const Lock lock(m_Mutex);
    for (Device& device : m_Bench.Devices()) {
        for (Port& port : device.ports) {
            if (port.line == nullptr) {
                continue;
            }
            port.line->Watch(waiting);
            if (const auto due = port.line->Due(End())) {
                waiting.WakeAt(m_Simulation.Clock().When(*due));
            }
        }
    }
}

void VirtualPorts::Serve(const PollSet& waited) {
    const Lock lock(m_Mutex);
    const ScenarioTime now = m_Simulation.Clock().Now();
    for (Device& device : m_Bench.Devices()) {
        for (Port& port : device.ports) {
            if (port.line != nullptr) {
                port.line->MendFarEnd(waited);
                port.line->ServeFarEnd(waited, now, End());
                port.line->DiscardForClosedHost(waited);
            }
        }
    }
}

VirtualPorts::Device& VirtualPorts::NeedDevice(const std::string& name) {
    Device* device = m_Bench.FindDevice(name);
    if (device == nullptr) {
        Refuse("no device '" + Printable(name) + "'");
    }
    return *device;
}

VirtualPorts::Port& VirtualPorts::NeedPort(const std::string& name) {
    Port* port = m_Bench.FindPort(name);
    if (port == nullptr) {
        Refuse("no port '" + Printable(name) + "'");
    }
    return *port;
}

void VirtualPorts::RemoveLines(Device& device) {
    for (Port& port : device.ports) {
        if (port.line == nullptr || Workbench::BelongsHere(device, port)) {
            continue;
        }
        m_Handles.KillPort(port.spec->name);
        if (m_Links != nullptr) {
            m_Links->RemoveLink(LinkName(port.spec->name));
        }
        port.line.reset();
    }
}

void VirtualPorts::MakeLines(Device& device) {
    m_Bench.AddLines(device, m_Simulation.Clock().Now());
    for (const Port& port : device.ports) {
        if (port.line != nullptr) {
            Link(port);
        }
    }
}

uint64_t VirtualPorts::AddLines(Device& device) {
    MakeLines(device);
    return Publish();
}

void VirtualPorts::TakeOut(Device& device) {
    if (!device.present) {
        Refuse("device is not plugged in");
    }
    device.present = false;
    RemoveLines(device);
}

// After a switch that failed: better no device than one whose ports are missing.
void VirtualPorts::PutBack(Device& device) {
    try {
        AddLines(device);
    } catch (const std::runtime_error& error) {
        LogError(std::string("pulled out, plug it in again: ") + error.what());
        device.present = false;
        RemoveLines(device);
        Publish();
    }
}

void VirtualPorts::Link(const Port& port) {
    if (m_Links != nullptr && !m_Links->AddLink(LinkName(port.spec->name), port.line->FarPath()) &&
        errno != EEXIST) {
        LogErrorOnce("port '" + Printable(port.spec->name) +
                     "' cannot be linked in the control directory: " + ErrnoText(errno));
    }
}

// What goes and comes back at once keeps its place in the list.
void VirtualPorts::PublishGone() { m_Notifier.Publish(m_Bench.Table()); }

uint64_t VirtualPorts::Publish() {
    const size_t left = m_Bench.GivePlaces();
    if (left > 0 && !std::exchange(m_SaidLeftOut, true)) {
        LogError("the list has room for 64 devices of 16 ports; " + std::to_string(left) +
                 " of the scenario's are left out");
    }
    return m_Notifier.Publish(m_Bench.Table());
}

// Nothing happens by itself when the scenario has ended.
ScenarioTime VirtualPorts::End() const {
    return m_Simulation.TheScenario().end.value_or(ScenarioTime::max());
}

// SPDX-License-Identifier: MIT
#include "adapters/virtual/virtual_ports.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "adapters/shared/adapter_log.h"
#include "adapters/virtual/control_words.h"

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
    return text + " at " + port.line->FarPath() + (port.line->IsHostOpen() ? " open" : " closed");
}

} // namespace

VirtualPorts::VirtualPorts(std::unique_ptr<const Scenario> scenario, HandleTable& handles,
                           StateNotifier& notifier, ControlDirectory* links)
    : m_Handles(handles), m_Notifier(notifier), m_Links(links), m_Bench(std::move(scenario)) {
    for (Device& device : m_Bench.Devices()) {
        device.present = device.spec->present;
        try {
            AddLines(device);
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
    return PullOut(NeedDevice(deviceName));
}

uint64_t VirtualPorts::Replug(const std::string& deviceName) {
    const Lock lock(m_Mutex);
    Device& device = NeedDevice(deviceName);
    PullOut(device);
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
    Publish();
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
            if (port.line != nullptr) {
                port.line->Watch(waiting);
            }
        }
    }
}

void VirtualPorts::Serve(const PollSet& waited) {
    const Lock lock(m_Mutex);
    const auto now = std::chrono::steady_clock::now();
    for (Device& device : m_Bench.Devices()) {
        for (Port& port : device.ports) {
            if (port.line != nullptr) {
                port.line->MendFarEnd(waited);
                port.line->ServeFarEnd(now);
                port.line->DiscardForClosedHost();
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

uint64_t VirtualPorts::AddLines(Device& device) {
    m_Bench.AddLines(device);
    for (const Port& port : device.ports) {
        if (port.line != nullptr) {
            Link(port);
        }
    }
    return Publish();
}

uint64_t VirtualPorts::PullOut(Device& device) {
    if (!device.present) {
        Refuse("device is not plugged in");
    }
    device.present = false;
    RemoveLines(device);
    return Publish();
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

uint64_t VirtualPorts::Publish() { return m_Notifier.Publish(m_Bench.Table()); }

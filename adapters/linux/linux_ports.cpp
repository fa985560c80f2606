// SPDX-License-Identifier: MIT
#include "adapters/linux/linux_ports.h"

#include <stdexcept>
#include <utility>

#include "adapters/linux/line_config.h"
#include "adapters/linux/serial_port.h"

using Lock = std::unique_lock<std::mutex>;

std::shared_ptr<PortSource> StartPortSource(HandleTable& handles, StateNotifier& notifier) {
    return std::make_shared<LinuxPorts>(handles, notifier);
}

LinuxPorts::LinuxPorts(HandleTable& handles, StateNotifier& notifier)
    : m_Handles(handles), m_Watch(handles, notifier) {}

int LinuxPorts::Open(const std::string& portName) {
    const Lock lock(m_Mutex);
    const DeviceTable::Port port = Need(portName);
    LineSettings settings = ConfiguredLine(port.facts, port.deviceName);
    Apply(HostChange(port), settings);
    m_Handles.RemovePort(portName); // held by ourselves it could not be opened
    return m_Watch.Enter(port, SerialPort::Open(port.facts, settings));
}

// A break may take seconds: it is sent when everything else is done and nobody is kept waiting.
void LinuxPorts::SetLine(const std::string& portName, const std::string& text) {
    LineChange change = ParseLineChange(text);
    LineChange lineBreak;
    std::swap(lineBreak.breakTime, change.breakTime);
    Lock lock(m_Mutex);
    const DeviceTable::Port port = Need(portName);
    const auto terminal = std::static_pointer_cast<SerialPort>(m_Handles.FindPort(portName));
    if (lineBreak.breakTime && terminal == nullptr) {
        throw std::runtime_error("a break needs an open port");
    }
    LineChange total = text.empty() ? LineChange{} : HostChange(port);
    Apply(change, total);
    if (terminal != nullptr && text.empty()) {
        terminal->Change(ConfiguredLine(port.facts, port.deviceName));
    } else if (terminal != nullptr) {
        LineSettings settings = terminal->Settings();
        Apply(change, settings);
        terminal->Change(settings, change);
    }
    m_HostLines[portName] = {port.arrival, total};
    lock.unlock();
    if (lineBreak.breakTime) {
        terminal->SendBreak(*lineBreak.breakTime);
    }
}

DeviceTable::Port LinuxPorts::Need(const std::string& portName) {
    auto port = m_Watch.Find(portName);
    if (!port) {
        throw std::runtime_error("it is not there; plug its device in");
    }
    return *std::move(port);
}

LineChange LinuxPorts::HostChange(const DeviceTable::Port& port) const {
    const auto found = m_HostLines.find(port.facts.node);
    const bool isKnown = found != m_HostLines.end() && found->second.arrival == port.arrival;
    return isKnown ? found->second.change : LineChange{};
}

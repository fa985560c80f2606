// SPDX-License-Identifier: MIT
#include "adapters/linux/device_table.h"

#include <string.h>

#include <algorithm>
#include <atomic>
#include <tuple>
#include <utility>

#include "OSAdapt.h"
#include "adapters/linux/device_names.h"
#include "adapters/shared/adapter_log.h"

namespace {

bool IsBefore(const DeviceTable::Port& left, const DeviceTable::Port& right) {
    return StandsBefore(left.facts, right.facts);
}

// Of the whole process: what an earlier table called by a number is never taken for another port.
uint64_t NewArrival() {
    static std::atomic<uint64_t> s_Last{0};
    return ++s_Last;
}

template <typename Item> size_t CountReported(const std::vector<Item>& items) {
    return static_cast<size_t>(std::count_if(items.begin(), items.end(),
                                             [](const Item& item) { return item.isReported; }));
}

} // namespace

void DeviceTable::Add(const PortFacts& facts, uint64_t sequence) {
    Device& device = DeviceOf(facts);
    const Port port{facts, NewArrival(), sequence, device.name, false};
    device.ports.insert(std::upper_bound(device.ports.begin(), device.ports.end(), port, IsBefore),
                        port);
    ReportWhatFits();
    if (!Find(facts.sysPath)->isReported) {
        LogError("port '" + Printable(facts.node) + "' of '" + device.name +
                 "' is not reported: at most " + std::to_string(OS_ADAPT_MAX_DEVICES) +
                 " devices and " + std::to_string(OS_ADAPT_MAX_PORTS) + " ports of a device are");
    }
}

bool DeviceTable::Remove(const std::string& sysPath) {
    for (auto device = m_Devices.begin(); device != m_Devices.end(); ++device) {
        auto& ports = device->ports;
        const auto port = std::find_if(ports.begin(), ports.end(), [&](const Port& other) {
            return other.facts.sysPath == sysPath;
        });
        if (port == ports.end()) {
            continue;
        }
        ports.erase(port);
        if (ports.empty()) {
            m_Devices.erase(device);
        }
        ReportWhatFits();
        return true;
    }
    return false;
}

void DeviceTable::Move(const std::string& sysPath, const std::string& newSysPath) {
    for (Device& device : m_Devices) {
        for (Port& port : device.ports) {
            if (port.facts.sysPath == sysPath) {
                port.facts.sysPath = newSysPath;
            }
        }
    }
}

const DeviceTable::Port* DeviceTable::Find(const std::string& sysPath) const {
    for (const Device& device : m_Devices) {
        for (const Port& port : device.ports) {
            if (port.facts.sysPath == sysPath) {
                return &port;
            }
        }
    }
    return nullptr;
}

const DeviceTable::Port* DeviceTable::FindNode(const std::string& node) const {
    for (const Device& device : m_Devices) {
        for (const Port& port : device.ports) {
            if (port.facts.node == node) {
                return &port;
            }
        }
    }
    return nullptr;
}

std::vector<DeviceTable::Port> DeviceTable::Ports() const {
    std::vector<Port> ports;
    for (const Device& device : m_Devices) {
        ports.insert(ports.end(), device.ports.begin(), device.ports.end());
    }
    return ports;
}

PortTable DeviceTable::Reported() const {
    PortTable table;
    for (const Device& device : m_Devices) {
        if (!device.isReported) {
            continue;
        }
        table.push_back(DeviceEntry{device.name, device.text, {}});
        for (const Port& port : device.ports) {
            if (port.isReported) {
                table.back().ports.push_back(PortEntry{port.facts.node, 0, port.arrival});
            }
        }
    }
    return table;
}

DeviceTable::Device& DeviceTable::DeviceOf(const PortFacts& facts) {
    const auto found = std::find_if(m_Devices.begin(), m_Devices.end(), [&](const Device& device) {
        return device.path == facts.devicePath;
    });
    if (found != m_Devices.end()) {
        return *found;
    }
    m_Devices.push_back(Device{facts.devicePath, FreeName(facts), DeviceText(facts), false, {}});
    return m_Devices.back();
}

std::string DeviceTable::FreeName(const PortFacts& facts) const {
    std::string plain = PlainName(facts);
    if (!facts.serial.empty() && !IsTaken(plain)) {
        return plain;
    }
    const std::string placed = NameAtPlace(facts);
    std::string name = placed;
    for (int number = 2; IsTaken(name); ++number) {
        const std::string tail = "#" + std::to_string(number);
        name = CleanText(placed, OS_ADAPT_DEVICE_TEXT_SIZE - 1 - tail.size()) + tail;
    }
    return name;
}

bool DeviceTable::IsTaken(const std::string& name) const {
    return std::any_of(m_Devices.begin(), m_Devices.end(),
                       [&](const Device& device) { return device.name == name; });
}

void DeviceTable::ReportWhatFits() {
    size_t count = CountReported(m_Devices);
    for (Device& device : m_Devices) {
        if (!device.isReported && count < OS_ADAPT_MAX_DEVICES) {
            device.isReported = true;
            ++count;
        }
        ReportPortsThatFit(device);
    }
}

void DeviceTable::ReportPortsThatFit(Device& device) {
    size_t count = CountReported(device.ports);
    for (Port& port : device.ports) {
        if (!device.isReported) {
            port.isReported = false;
        } else if (!port.isReported && count < OS_ADAPT_MAX_PORTS) {
            port.isReported = true;
            ++count;
        }
    }
}

// Versions are what strverscmp was made for; it takes "1-1.10" to stand behind "1-1.9" as well.
bool StandsBefore(const PortFacts& left, const PortFacts& right) {
    const auto key = [](const PortFacts& facts) {
        return std::tie(facts.interfaceNumber, facts.portNumber);
    };
    if (left.bus != right.bus) {
        return left.bus < right.bus;
    }
    if (const int order = strverscmp(left.place.c_str(), right.place.c_str()); order != 0) {
        return order < 0;
    }
    if (left.devicePath == right.devicePath && key(left) != key(right)) {
        return key(left) < key(right);
    }
    return strverscmp(left.node.c_str(), right.node.c_str()) < 0;
}

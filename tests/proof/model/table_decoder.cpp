// SPDX-License-Identifier: MIT
#include "tests/proof/model/table_decoder.h"

#include <algorithm>
#include <climits>

namespace model {
namespace {

const std::string kLongDevice(127, 'D');
const std::string kEndlessDevice = std::string(127, 'E') + "1"; // fills its array
const std::string kEndlessTwin = std::string(127, 'E') + "2";   // the same, as far as it is read
const std::string kLongPort(255, 'l');
const std::string kEndlessPort = std::string(255, 'e') + "1";
const std::string kEndlessPortTwin = std::string(255, 'e') + "2";

} // namespace

const Table& TableDecoder::Change() {
    static constexpr Changer kChangers[] = {
        &TableDecoder::Replace,       &TableDecoder::AddPort,         &TableDecoder::AddPort,
        &TableDecoder::RemovePort,    &TableDecoder::RemovePort,      &TableDecoder::RemovePort,
        &TableDecoder::RenamePort,    &TableDecoder::RenamePort,      &TableDecoder::MovePort,
        &TableDecoder::MovePort,      &TableDecoder::AddDevice,       &TableDecoder::AddDevice,
        &TableDecoder::RemoveDevice,  &TableDecoder::RemoveDevice,    &TableDecoder::TurnRound,
        &TableDecoder::MiscountPorts, &TableDecoder::MiscountDevices, &TableDecoder::CountTruly,
        &TableDecoder::CountTruly,
    };
    if (m_Bytes.OneIn(64)) {
        Crowd();
    } else {
        (this->*m_Bytes.Pick(kChangers))();
    }
    return m_Table;
}

void TableDecoder::Replace() {
    m_Table = Table();
    const int devices = m_Bytes.Below(4);
    for (int i = 0; i < devices; ++i) {
        m_Table.devices.push_back(NewDevice(m_Bytes.Below(4)));
    }
}

void TableDecoder::AddPort() {
    DeviceEntry* const device = AnyDevice();
    if (device == nullptr) {
        AddDevice();
    } else {
        device->ports.push_back(NewPort());
    }
}

void TableDecoder::RemovePort() {
    DeviceEntry* const device = AnyDevice();
    if (device != nullptr && !device->ports.empty()) {
        const auto at = m_Bytes.IndexBelow(device->ports.size());
        device->ports.erase(device->ports.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

void TableDecoder::RenamePort() {
    DeviceEntry* const device = AnyDevice();
    if (device != nullptr && !device->ports.empty()) {
        device->ports[m_Bytes.IndexBelow(device->ports.size())] = NewPort();
    }
}

void TableDecoder::MovePort() {
    DeviceEntry* const from = AnyDevice();
    DeviceEntry* const to = AnyDevice();
    if (from != nullptr && !from->ports.empty()) {
        const PortEntry port = from->ports.back();
        from->ports.pop_back();
        to->ports.push_back(port);
    }
}

void TableDecoder::AddDevice() { m_Table.devices.push_back(NewDevice(1 + m_Bytes.Below(3))); }

void TableDecoder::RemoveDevice() {
    if (!m_Table.devices.empty()) {
        const auto at = m_Bytes.IndexBelow(m_Table.devices.size());
        m_Table.devices.erase(m_Table.devices.begin() + static_cast<std::ptrdiff_t>(at));
    }
}

void TableDecoder::TurnRound() {
    std::reverse(m_Table.devices.begin(), m_Table.devices.end());
    if (DeviceEntry* const device = AnyDevice()) {
        std::reverse(device->ports.begin(), device->ports.end());
    }
}

void TableDecoder::MiscountPorts() {
    static constexpr int kCounts[] = {-1, 0, 1, 2, 3, 17, 1000, INT_MAX, INT_MIN};
    if (DeviceEntry* const device = AnyDevice()) {
        device->count = m_Bytes.Pick(kCounts);
    }
}

void TableDecoder::MiscountDevices() {
    static constexpr int kCounts[] = {-1, 0, 1, 2, 3, 3, 65, INT_MAX, INT_MIN};
    m_Table.count = m_Bytes.Pick(kCounts);
}

void TableDecoder::CountTruly() {
    m_Table.count.reset();
    for (DeviceEntry& device : m_Table.devices) {
        device.count.reset();
    }
}

// As many as there is room for, and more.
void TableDecoder::Crowd() {
    const int devices = m_Bytes.OneIn(2) ? 66 : 3;
    for (int i = 0; i < devices; ++i) {
        DeviceEntry device{"device " + std::to_string(i), "", {}, {}};
        for (int j = 0; j < (devices > 3 ? 1 : 18); ++j) {
            device.ports.push_back({"port " + std::to_string(i) + "." + std::to_string(j), 0});
        }
        m_Table.devices.push_back(device);
    }
}

DeviceEntry TableDecoder::NewDevice(int ports) {
    DeviceEntry device;
    device.name = DeviceName();
    device.text = m_Bytes.OneIn(2) ? DeviceName() : "a text";
    for (int i = 0; i < ports; ++i) {
        device.ports.push_back(NewPort());
    }
    return device;
}

PortEntry TableDecoder::NewPort() {
    static constexpr int kProposed[] = {0, 0, 0, 0, 0, 0, 0, 1, 2, 2, 3, 4, 5, 7, -3, INT_MAX};
    return {PortName(), m_Bytes.Pick(kProposed)};
}

std::string TableDecoder::DeviceName() {
    static const std::string kNames[] = {"A", "B",         "C", "A", "B",         "C",
                                         "A", "B",         "C", "",  kLongDevice, kEndlessDevice,
                                         "D", kEndlessTwin};
    return m_Bytes.Pick(kNames);
}

std::string TableDecoder::PortName() {
    static const std::string kNames[] = {
        "p1", "p2", "p3",       "p4",       "p5",      "p6",         "p7",
        "p8", "p1", "p2",       "p3",       "p4",      "p5",         "p6",
        "",   "p9", "100%% of", "rate %d%", kLongPort, kEndlessPort, kEndlessPortTwin};
    return m_Bytes.Pick(kNames);
}

DeviceEntry* TableDecoder::AnyDevice() {
    return m_Table.devices.empty() ? nullptr
                                   : &m_Table.devices[m_Bytes.IndexBelow(m_Table.devices.size())];
}

} // namespace model

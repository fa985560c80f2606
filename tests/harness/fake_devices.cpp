// SPDX-License-Identifier: MIT
#include "tests/harness/fake_devices.h"

#include <cstring>
#include <stdexcept>

namespace {

template <std::size_t size> void Store(char (&array)[size], const std::string& text) {
    text.copy(array, size);
}

} // namespace

FakeDevices::FakeDevices() : m_List(std::make_shared<_OS_ADAPT_DEVICEPORTLIST>()) {}

_OS_ADAPT_DEVICEPORTINFO& FakeDevices::Latest() {
    if (m_Devices == 0) {
        throw std::logic_error("no device yet");
    }
    return m_List->stDevice[m_Devices - 1];
}

FakeDevices& FakeDevices::Device(const std::string& name, const std::string& text) {
    if (m_Devices == OS_ADAPT_MAX_DEVICES) {
        throw std::logic_error("too many devices");
    }
    m_List->nDeviceCount = ++m_Devices;
    m_Ports = 0;
    Store(Latest().szDeviceName, name);
    Store(Latest().szDeviceText, text);
    return *this;
}

FakeDevices& FakeDevices::Port(const std::string& name, int id) {
    if (m_Ports == OS_ADAPT_MAX_PORTS) {
        throw std::logic_error("too many ports");
    }
    _OS_ADAPT_PORTINFO& port = Latest().stPort[m_Ports];
    Store(port.szPortName, name);
    port.nPortID = id;
    Latest().nPortCount = ++m_Ports;
    return *this;
}

FakeDevices& FakeDevices::DeviceCount(int count) {
    m_List->nDeviceCount = count;
    return *this;
}

FakeDevices& FakeDevices::PortCount(int count) {
    Latest().nPortCount = count;
    return *this;
}

FakeDevices FakeDevices::Many(int devices, int portsEach) {
    FakeDevices many;
    int port = 0;
    for (int device = 1; device <= devices; ++device) {
        many.Device("Device " + std::to_string(device));
        for (int i = 0; i < portsEach; ++i) {
            many.Port("COM" + std::to_string(++port));
        }
    }
    return many;
}

// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_device.h"

#include <cstdio>
#include <map>
#include <stdexcept>

namespace {

const char* const kController = "/sys/devices/pci0000:00/0000:00:14.0";

// The numbers of the kernel's documentation for these nodes.
std::string NumberOf(const std::string& name) {
    static const std::map<std::string, std::pair<int, int>> kFirst{
        {"ttyUSB", {188, 0}},  {"ttyACM", {166, 0}}, {"ttyS", {4, 64}}, {"rfcomm", {216, 0}},
        {"ttyAMA", {204, 64}}, {"ttyGS", {242, 0}},  {"tty", {4, 0}}};
    const size_t digits = name.find_first_of("0123456789");
    const auto first = kFirst.find(name.substr(0, digits));
    const int index = digits == std::string::npos ? 0 : std::stoi(name.substr(digits));
    return first == kFirst.end() ? "240:" + std::to_string(index)
                                 : std::to_string(first->second.first) + ":" +
                                       std::to_string(first->second.second + index);
}

MockEntry UsbDevice(const std::string& path, const std::string& vendor,
                    const std::string& product) {
    return {path,
            "usb",
            "usb",
            {{"DEVTYPE", "usb_device"}},
            {{"idVendor", vendor}, {"idProduct", product}}};
}

std::string TwoDigits(int number) {
    char text[16];
    std::snprintf(text, sizeof text, "%02x", static_cast<unsigned>(number));
    return text;
}

} // namespace

std::string MockPort::Number() const {
    return Terminal().properties.at(0).second + ":" + Terminal().properties.at(1).second;
}

MockDevice MockDevice::Usb(const std::string& place) {
    MockDevice device;
    const std::string bus = place.substr(0, place.find('-'));
    std::string path = std::string(kController) + "/usb" + bus;
    device.m_Parents.push_back(UsbDevice(path, "1d6b", "0002"));
    device.m_Parents.back().attributes.emplace_back("product", "xHCI Host Controller");
    device.m_Parents.back().attributes.emplace_back("serial", "0000:00:14.0");
    for (size_t end = place.find('.');; end = place.find('.', end + 1)) {
        path += "/" + place.substr(0, end);
        device.m_Parents.push_back(UsbDevice(path, "05e3", "0610"));
        if (end == std::string::npos) {
            return device;
        }
        device.m_Parents.back().attributes.emplace_back("product", "USB2.1 Hub");
    }
}

MockDevice MockDevice::BuiltIn(const std::string& bus, const std::string& name,
                               const std::string& driver) {
    const std::string parent = bus == "pci" ? "pci0000:00" : bus == "pnp" ? "pnp0" : bus;
    MockDevice device;
    device.m_Parents.push_back({"/sys/devices/" + parent + "/" + name, bus, driver, {}, {}});
    return device;
}

MockDevice MockDevice::Virtual() {
    MockDevice device;
    device.m_Parents.push_back({"/sys/devices/virtual", "", "", {}, {}});
    return device;
}

MockDevice MockDevice::Bluetooth(const std::string& connection) {
    MockDevice device;
    const std::string host = "/sys/devices/virtual/bluetooth/hci0";
    device.m_Parents.push_back({host, "bluetooth", "", {{"DEVTYPE", "host"}}, {}});
    device.m_Parents.push_back(
        {host + "/hci0:" + connection, "bluetooth", "", {{"DEVTYPE", "link"}}, {}});
    return device;
}

MockDevice& MockDevice::Id(const std::string& vendor, const std::string& product) {
    m_Parents.back().attributes = {{"idVendor", vendor}, {"idProduct", product}};
    return *this;
}

MockDevice& MockDevice::Texts(const std::string& vendor, const std::string& product,
                              const std::string& serial) {
    return Attribute("manufacturer", vendor)
        .Attribute("product", product)
        .Attribute("serial", serial);
}

MockDevice& MockDevice::Attribute(const std::string& name, const std::string& value) {
    if (!value.empty()) {
        m_Parents.back().attributes.emplace_back(name, value);
    }
    return *this;
}

MockDevice& MockDevice::Port(const std::string& name, int interface, const std::string& driver,
                             int number) {
    const std::string place = Device().path.substr(Device().path.rfind('/') + 1);
    const std::string at = Device().path + "/" + place + ":1." + std::to_string(interface);
    std::vector<MockEntry> between{{at,
                                    "usb",
                                    driver,
                                    {{"DEVTYPE", "usb_interface"}},
                                    {{"bInterfaceNumber", TwoDigits(interface)}}}};
    if (driver != "cdc_acm") {
        between.push_back(
            {at + "/" + name, "usb-serial", driver, {}, {{"port_number", std::to_string(number)}}});
    }
    const std::string parent = between.back().path;
    return AddPort(name, std::move(between), parent);
}

MockDevice& MockDevice::Port(const std::string& name) { return AddPort(name, {}, Device().path); }

MockDevice& MockDevice::PortOfSerialBase(const std::string& name) {
    const std::string place = Device().path.substr(Device().path.rfind('/') + 1);
    const std::string controller = Device().path + "/" + place + ":0";
    const std::string port = controller + "/" + place + ":0.0";
    return AddPort(name,
                   {{controller, "serial-base", "ctrl", {{"DEVTYPE", "ctrl"}}, {}},
                    {port, "serial-base", "port", {{"DEVTYPE", "port"}}, {}}},
                   port);
}

MockDevice& MockDevice::AddPort(const std::string& name, std::vector<MockEntry> between,
                                const std::string& directory) {
    const std::string number = NumberOf(name);
    const size_t colon = number.find(':');
    between.push_back({directory + "/tty/" + name,
                       "tty",
                       "",
                       {{"MAJOR", number.substr(0, colon)},
                        {"MINOR", number.substr(colon + 1)},
                        {"DEVNAME", name}},
                       {{"dev", number}}});
    m_Ports.push_back({"/dev/" + name, std::move(between)});
    return *this;
}

MockDevice& MockDevice::PortAttribute(const std::string& name, const std::string& value) {
    m_Ports.back().Terminal().attributes.emplace_back(name, value);
    return *this;
}

MockDevice& MockDevice::PortProperty(const std::string& name, const std::string& value) {
    m_Ports.back().Terminal().properties.emplace_back(name, value);
    return *this;
}

const MockPort& MockDevice::PortAt(const std::string& name) const {
    for (const MockPort& port : m_Ports) {
        if (port.node == "/dev/" + name) {
            return port;
        }
    }
    throw std::invalid_argument("no port " + name);
}

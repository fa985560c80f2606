// SPDX-License-Identifier: MIT
//
// Records for tests that need no adapter: vectors of ports and devices, written as they read.
#ifndef KOVASMGR_TESTS_UNIT_DEVICES_PORT_BUILDERS_H
#define KOVASMGR_TESTS_UNIT_DEVICES_PORT_BUILDERS_H

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "devices/records.h"

inline _PORT_ Port(int32_t id, const std::string& name = "", const std::string& device = "",
                   const std::string& text = "") {
    _PORT_ port;
    port.nPortID = id;
    port.strPortName = name;
    port.strDeviceName = device;
    port.strDeviceText = text;
    return port;
}

inline std::vector<_PORT_> PortsNumbered(std::initializer_list<int32_t> ids) {
    std::vector<_PORT_> ports;
    for (const int32_t id : ids) {
        ports.push_back(Port(id, "COM" + std::to_string(ports.size())));
    }
    return ports;
}

inline _COMM_MGR_DEVICE_INFO_ Device(const std::string& name, std::vector<_PORT_> ports) {
    _COMM_MGR_DEVICE_INFO_ device;
    std::memcpy(device.szDeviceName, name.data(), name.size());
    device.vecPorts = std::move(ports);
    return device;
}

inline std::vector<int32_t> IDs(const std::vector<_PORT_>& ports) {
    std::vector<int32_t> ids;
    for (const _PORT_& port : ports) {
        ids.push_back(port.nPortID);
    }
    return ids;
}

inline std::vector<std::string> Names(const std::vector<_PORT_>& ports) {
    std::vector<std::string> names;
    for (const _PORT_& port : ports) {
        names.push_back(port.strPortName);
    }
    return names;
}

inline std::vector<std::string> Names(const std::vector<_COMM_MGR_DEVICE_INFO_>& devices) {
    std::vector<std::string> names;
    for (const _COMM_MGR_DEVICE_INFO_& device : devices) {
        names.emplace_back(device.szDeviceName);
    }
    return names;
}

#endif

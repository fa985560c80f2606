// SPDX-License-Identifier: MIT
#include "devices/port_book.h"

#include <cstring>

#include "devices/lookup.h"

namespace {

// dest is zeroed, so that whatever does not fit leaves a terminator behind.
template <size_t size> void CopyText(char (&dest)[size], const std::string& text) {
    std::memcpy(dest, text.data(), std::min(text.size(), size - 1));
}

void AddToTree(const _PORT_& port, std::vector<_COMM_MGR_DEVICE_INFO_>& devices) {
    const auto known = FindDeviceByName(devices, port.strDeviceName.c_str());
    if (known != devices.end()) {
        known->vecPorts.push_back(port);
        return;
    }
    _COMM_MGR_DEVICE_INFO_ device;
    CopyText(device.szDeviceName, port.strDeviceName);
    CopyText(device.szDeviceText, port.strDeviceText);
    device.vecPorts.push_back(port);
    devices.push_back(device);
}

} // namespace

int32_t NextPortID(const std::vector<_PORT_>& ports, int32_t& lastPortID) {
    ++lastPortID;
    for (const _PORT_& port : ports) {
        if (port.nPortID == lastPortID) {
            ++lastPortID;
        }
    }
    return lastPortID;
}

void AddPort(const _PORT_& port, std::vector<_PORT_>& ports,
             std::vector<_COMM_MGR_DEVICE_INFO_>& devices) {
    ports.push_back(port);
    try {
        AddToTree(port, devices);
    } catch (...) {
        ports.pop_back(); // known but in no device, it could neither be shown nor ever be removed
        throw;
    }
}

std::vector<std::string> DeleteFromTree(int portID, std::vector<_COMM_MGR_DEVICE_INFO_>& devices) {
    std::vector<std::string> deleted;
    for (size_t i = 0; i < devices.size();) {
        std::vector<_PORT_>& ports = devices[i].vecPorts;
        const auto port = FindPortByID(ports, portID);
        if (port != ports.end()) {
            deleted.push_back(port->strPortName);
            ports.erase(port);
        }
        if (ports.empty()) {
            devices.erase(devices.begin() + static_cast<std::ptrdiff_t>(i));
            i = 0; // a second port of this number in an earlier device goes as well
        } else {
            ++i;
        }
    }
    return deleted;
}

void DeleteFromPorts(int portID, std::vector<_PORT_>& ports) {
    const auto port = FindPortByID(ports, portID);
    if (port != ports.end()) {
        ports.erase(port);
    }
}

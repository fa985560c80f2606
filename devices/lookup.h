// SPDX-License-Identifier: MIT
//
// First-match finds over the two containers of ports and devices; the end of the container when
// nothing matches.
#ifndef KOVASMGR_DEVICES_LOOKUP_H
#define KOVASMGR_DEVICES_LOOKUP_H

#include <algorithm>
#include <cstring>

#include "devices/records.h"

inline std::vector<_PORT_>::iterator FindPortByID(std::vector<_PORT_>& ports, int portID) {
    return std::find_if(ports.begin(), ports.end(),
                        [portID](const _PORT_& port) { return port.nPortID == portID; });
}

inline std::vector<_PORT_>::const_iterator FindPortByName(const std::vector<_PORT_>& ports,
                                                          const char* portName) {
    return std::find_if(ports.begin(), ports.end(), [portName](const _PORT_& port) {
        return std::strcmp(port.strPortName.c_str(), portName) == 0;
    });
}

inline std::vector<_COMM_MGR_DEVICE_INFO_>::iterator
FindDeviceByName(std::vector<_COMM_MGR_DEVICE_INFO_>& devices, const char* deviceName) {
    return std::find_if(devices.begin(), devices.end(),
                        [deviceName](const _COMM_MGR_DEVICE_INFO_& device) {
                            return std::strcmp(device.szDeviceName, deviceName) == 0;
                        });
}

#endif

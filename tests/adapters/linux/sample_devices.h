// SPDX-License-Identifier: MIT
//
// Devices that many tests need, and what the adapter calls them with their ports.
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_SAMPLE_DEVICES_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_SAMPLE_DEVICES_H

#include <string>

#include "tests/adapters/linux/mock_device.h"

inline MockDevice Ftdi(const std::string& place, const std::string& serial,
                       const std::string& port) {
    return MockDevice::Usb(place)
        .Id("0403", "6001")
        .Texts("FTDI", "FT232R USB UART", serial)
        .Port(port, 0, "ftdi_sio");
}

/// The device whose ports must not notice what happens to others.
inline MockDevice Neighbour() { return Ftdi("1-1.1", "N", "ttyUSB0"); }
const char* const kNeighbour = "FTDI FT232R N(/dev/ttyUSB0)";

inline MockDevice Other() { return Ftdi("1-1.2", "B", "ttyUSB1"); }
const char* const kOther = "FTDI FT232R B(/dev/ttyUSB1)";

inline MockDevice Quad() {
    return MockDevice::Usb("1-1.3")
        .Id("0403", "6011")
        .Texts("FTDI", "Quad", "Q")
        .Port("ttyUSB4", 0, "ftdi_sio")
        .Port("ttyUSB5", 1, "ftdi_sio")
        .Port("ttyUSB6", 2, "ftdi_sio")
        .Port("ttyUSB7", 3, "ftdi_sio");
}
const char* const kQuad = "FTDI Quad Q(/dev/ttyUSB4 /dev/ttyUSB5 /dev/ttyUSB6 /dev/ttyUSB7)";

/// "+ a b" for an insertion with these devices, "- a b" for a pull-out.
template <typename... Texts> std::string Told(const char* sign, const Texts&... devices) {
    std::string text;
    ((text += (text.empty() ? "" : " ") + std::string(devices)), ...);
    return std::string(sign) + " " + text;
}

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_PORT_FACTS_H
#define KOVASMGR_ADAPTERS_LINUX_PORT_FACTS_H

#include <sys/types.h>

#include <string>

/// What is known of a port, read once when it arrives. At its removal the kernel has taken most of
/// it away already.
///
/// Texts are as the device and the system give them: any bytes, also control characters.
struct PortFacts {
    std::string sysPath;    // "/sys/devices/.../tty/ttyUSB0": the port's key
    std::string node;       // "/dev/ttyUSB0": the port's name
    dev_t number = 0;       // of the node
    ino_t inode = 0;        // of sysPath; a port that went and came back has another one
    std::string devicePath; // sysPath of the physical device: the ports of one device have it alike
    std::string bus;        // "usb", "pci", "pnp", "platform", "bluetooth", ...
    std::string place;      // where the device is attached: "1-1.4", "0000:00:16.3", "00:05"
    std::string driver;     // "ftdi_sio"
    std::string vendorId;   // "0403", empty when the bus has none
    std::string productId;  // "6001"
    std::string vendor;     // "FTDI"
    std::string product;    // "FT232R USB UART"
    std::string serial;     // "A50285BI", empty when there is none
    int interfaceNumber = 0; // orders the ports of one device ...
    int portNumber = 0;      // ... and this the ports of one interface
};

#endif

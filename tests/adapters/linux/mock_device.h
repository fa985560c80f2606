// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_DEVICE_H
#define KOVASMGR_TESTS_ADAPTERS_LINUX_MOCK_DEVICE_H

#include <string>
#include <utility>
#include <vector>

/// One directory of /sys with what is in it.
struct MockEntry {
    using Texts = std::vector<std::pair<std::string, std::string>>;

    std::string path;
    std::string subsystem;
    std::string driver;
    Texts properties; // the kernel's, in its "uevent" file
    Texts attributes;
};

/// A port of a device: the terminal last, what stands between it and the device before it.
struct MockPort {
    std::string node; // "/dev/ttyUSB0"
    std::vector<MockEntry> entries;

    const MockEntry& Terminal() const { return entries.back(); }
    MockEntry& Terminal() { return entries.back(); }
    std::string Number() const; // "188:0"
};

/// A device that can be plugged into a mocked machine, composed by its setters.
class MockDevice {
  public:
    /// At a place like "1-1.4", with the root hub and the hubs that this implies.
    static MockDevice Usb(const std::string& place);

    /// A built-in UART's parent: on bus "pnp", "pci", "platform", ... under this name.
    static MockDevice BuiltIn(const std::string& bus, const std::string& name,
                              const std::string& driver);

    /// A device without any parent: terminals of the kernel itself, unconnected Bluetooth.
    static MockDevice Virtual();

    /// A Bluetooth connection that rfcomm terminals hang on.
    static MockDevice Bluetooth(const std::string& connection);

    MockDevice& Id(const std::string& vendor, const std::string& product);

    /// What is empty is not there at all.
    MockDevice& Texts(const std::string& vendor, const std::string& product,
                      const std::string& serial);
    MockDevice& Attribute(const std::string& name, const std::string& value);

    /// A port of a USB interface.
    MockDevice& Port(const std::string& name, int interface, const std::string& driver,
                     int number = 0);

    /// A port directly under the device.
    MockDevice& Port(const std::string& name);

    /// A port under the devices that newer kernels put between a UART and what it belongs to.
    MockDevice& PortOfSerialBase(const std::string& name);

    /// Of the last port's terminal.
    MockDevice& PortAttribute(const std::string& name, const std::string& value);
    MockDevice& PortProperty(const std::string& name, const std::string& value);

    const MockEntry& Device() const { return m_Parents.back(); }
    const std::vector<MockEntry>& Parents() const { return m_Parents; } // itself last
    const std::vector<MockPort>& Ports() const { return m_Ports; }

    /// The port at this node; throws when there is none.
    const MockPort& PortAt(const std::string& name) const;

  private:
    MockDevice& AddPort(const std::string& name, std::vector<MockEntry> between,
                        const std::string& directory);

    std::vector<MockEntry> m_Parents;
    std::vector<MockPort> m_Ports;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_HARNESS_FAKE_DEVICES_H
#define KOVASMGR_TESTS_HARNESS_FAKE_DEVICES_H

#include <memory>
#include <string>

#include "tests/fakes/fake_adapter.h"

/// What is attached, built by chained setters:
///
///     FakeDevices().Device("Modem", "a text").Port("COM1").Port("COM2", 7).Apply(*fake);
///
/// A text that fills its array is stored without a terminator, a longer one is cut to that.
class FakeDevices {
  public:
    FakeDevices();

    /// Adds a device.
    FakeDevices& Device(const std::string& name, const std::string& text = "");

    /// Adds a port to the latest device; id 0 lets the manager number it.
    FakeDevices& Port(const std::string& name, int id = 0);

    /// Reports this many devices, whatever was added.
    FakeDevices& DeviceCount(int count);

    /// Reports this many ports for the latest device, whatever was added.
    FakeDevices& PortCount(int count);

    /// The record itself, for everything else that can be wrong with it.
    _OS_ADAPT_DEVICEPORTLIST& Raw() { return *m_List; }

    void Apply(FakeAdapterControl& fake) const { fake.SetDevices(*m_List); }

    /// The plain table: as many devices, each with as many ports, "Device 1" and "COM1" onwards.
    static FakeDevices Many(int devices, int portsEach);

  private:
    _OS_ADAPT_DEVICEPORTINFO& Latest();

    std::shared_ptr<_OS_ADAPT_DEVICEPORTLIST> m_List;
    int m_Devices = 0;
    int m_Ports = 0; // of the latest device
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_GUEST_HOST_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_GUEST_HOST_H

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "KOVASMgr.h"

struct Port {
    int id = -1;
    std::string name; // "/dev/ttyUSB0"
};

struct Device {
    std::string name;
    std::string text;
    std::vector<Port> ports;
};

/// A host on the shared library, in a machine with a real kernel. The adapter is the one in the
/// current directory. At the end nothing of the library may be left: no descriptor, no thread.
class GuestHost : public testing::Test {
  protected:
    GuestHost();
    ~GuestHost() override;
    void TearDown() override;

    /// Initialises the library and registers for notices.
    static void Start();

    static std::vector<Device> Devices();

    /// The device whose name or text holds this.
    static std::optional<Device> Find(const std::string& part);

    /// Waits for it; throws with the list as it is when it does not come.
    static Device WaitFor(const std::string& part);
    static bool WaitUntilGone(const std::string& part);

    /// Opens a port and expects that to succeed.
    static void Open(const Port& port);

    /// Sends everything, in pieces that fit one call; false when the port fails or takes nothing
    /// for long.
    static bool Send(const Port& port, const std::string& bytes);

    static std::string LogText();

    /// The descriptors of this process that are terminals of this name ("/dev/ttyACM"), also of
    /// ones that have gone.
    static int DescriptorsOf(const std::string& nodes);

  private:
    std::size_t m_Descriptors;
    std::size_t m_Threads;
};

/// Writes a measured figure where the driver finds it: "figure NAME: TEXT".
void TellFigure(const std::string& name, const std::string& text);

std::ostream& operator<<(std::ostream& out, const Device& device);

#endif

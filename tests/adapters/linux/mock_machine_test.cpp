// SPDX-License-Identifier: MIT
//
// The bench itself: what it shows a program that asks libudev.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <libudev.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "tests/adapters/linux/mock_calls.h"
#include "tests/adapters/linux/mock_machine.h"

namespace {

using Device = std::unique_ptr<udev_device, decltype(&udev_device_unref)>;

const MockDevice kDevice = MockDevice::Usb("1-1.4")
                               .Id("0403", "6001")
                               .Texts("FTDI", "FT232R", "A5")
                               .Port("ttyUSB0", 0, "ftdi_sio");

ino_t InodeOf(const MockEntry& entry) {
    struct stat info {};
    return stat(entry.path.c_str(), &info) == 0 ? info.st_ino : 0;
}

class MockedMachine : public testing::Test {
  protected:
    ~MockedMachine() override {
        udev_monitor_unref(m_Kernel);
        udev_monitor_unref(m_Udev);
        udev_unref(m_Context);
    }

    udev_monitor* Listen(const char* source) const {
        udev_monitor* const monitor = udev_monitor_new_from_netlink(m_Context, source);
        udev_monitor_filter_add_match_subsystem_devtype(monitor, "tty", nullptr);
        udev_monitor_enable_receiving(monitor);
        return monitor;
    }

    // "add 1001 ttyUSB0 initialized"; empty when there is nothing.
    static std::string Next(udev_monitor* monitor) {
        errno = 0;
        const Device device(udev_monitor_receive_device(monitor), udev_device_unref);
        if (device == nullptr) {
            return errno == EAGAIN ? "" : "error " + std::to_string(errno);
        }
        return std::string(udev_device_get_action(device.get())) + " " +
               std::to_string(udev_device_get_seqnum(device.get())) + " " +
               udev_device_get_sysname(device.get()) +
               (udev_device_get_is_initialized(device.get()) != 0 ? " initialized" : "");
    }

    Device Look() const {
        return {udev_device_new_from_syspath(m_Context,
                                             kDevice.PortAt("ttyUSB0").Terminal().path.c_str()),
                udev_device_unref};
    }

    MockMachine m_Machine{true};
    udev* const m_Context = udev_new();
    udev_monitor* const m_Kernel = Listen("kernel");
    udev_monitor* const m_Udev = Listen("udev");
};

} // namespace

TEST_F(MockedMachine, ADeviceIsSeenWithItsParents) {
    m_Machine.Plug(kDevice);
    const Device tty = Look();
    ASSERT_NE(nullptr, tty);
    EXPECT_STREQ("/dev/ttyUSB0", udev_device_get_devnode(tty.get()));
    EXPECT_EQ(makedev(188, 0), udev_device_get_devnum(tty.get()));
    udev_device* const usb =
        udev_device_get_parent_with_subsystem_devtype(tty.get(), "usb", "usb_device");
    EXPECT_STREQ("1-1.4", udev_device_get_sysname(usb));
    EXPECT_STREQ("FT232R", udev_device_get_sysattr_value(usb, "product"));
    EXPECT_STREQ("ftdi_sio", udev_device_get_driver(udev_device_get_parent(tty.get())));
}

TEST_F(MockedMachine, TheKernelAndUdevdAreHeardApart) {
    m_Machine.Appear(kDevice);
    m_Machine.KernelSays("add", kDevice);
    EXPECT_EQ("add 1001 ttyUSB0", Next(m_Kernel));
    EXPECT_EQ("", Next(m_Udev));
    EXPECT_EQ(nullptr, udev_device_get_property_value(Look().get(), "USEC_INITIALIZED"));
    m_Machine.UdevSays("add", kDevice);
    EXPECT_EQ("", Next(m_Kernel));
    EXPECT_EQ("add 1001 ttyUSB0 initialized", Next(m_Udev));
    EXPECT_STREQ("1234", udev_device_get_property_value(Look().get(), "USEC_INITIALIZED"));
}

TEST_F(MockedMachine, AtTheRemovalTheParentIsTheWrongOne) {
    m_Machine.Plug(kDevice);
    m_Machine.Pull(kDevice);
    Next(m_Kernel);
    const Device tty(udev_monitor_receive_device(m_Kernel), udev_device_unref);
    ASSERT_NE(nullptr, tty);
    EXPECT_STREQ("remove", udev_device_get_action(tty.get()));
    udev_device* const usb =
        udev_device_get_parent_with_subsystem_devtype(tty.get(), "usb", "usb_device");
    EXPECT_STREQ("1-1", udev_device_get_sysname(usb));
}

TEST_F(MockedMachine, WhatComesBackHasAnotherInode) {
    m_Machine.Plug(kDevice);
    const ino_t first = InodeOf(kDevice.PortAt("ttyUSB0").Terminal());
    m_Machine.Pull(kDevice);
    EXPECT_EQ(0U, InodeOf(kDevice.PortAt("ttyUSB0").Terminal()));
    m_Machine.Plug(kDevice);
    EXPECT_NE(first, InodeOf(kDevice.PortAt("ttyUSB0").Terminal()));
}

TEST_F(MockedMachine, BytesPassBetweenANodeAndItsFarEndUntilItIsPulled) {
    m_Machine.Plug(kDevice);
    const int port = open("/dev/ttyUSB0", O_RDWR | O_NOCTTY);
    ASSERT_GE(port, 0);
    ASSERT_EQ(2, write(port, "to", 2));
    EXPECT_EQ("to", m_Machine.FarEnd("ttyUSB0").Receive(2));
    ASSERT_TRUE(m_Machine.FarEnd("ttyUSB0").Send("fro"));
    char buffer[4] = {};
    EXPECT_EQ(3, read(port, buffer, 3));
    EXPECT_STREQ("fro", buffer);
    m_Machine.Pull(kDevice);
    EXPECT_EQ(-1, write(port, "x", 1));
    close(port);
    EXPECT_EQ(-1, open("/dev/ttyUSB0", O_RDWR | O_NOCTTY));
}

TEST_F(MockedMachine, MonitorsFailOnceAndGoOn) {
    m_Machine.FailMonitors(ENOBUFS);
    for (udev_monitor* const monitor : {m_Kernel, m_Udev}) {
        EXPECT_EQ("error " + std::to_string(ENOBUFS), Next(monitor));
        EXPECT_NE(std::string::npos, Next(monitor).find("console"));
        EXPECT_EQ("", Next(monitor));
    }
}

TEST_F(MockedMachine, AnActionCanBeDoneWhileANodeIsOpened) {
    m_Machine.Plug(kDevice);
    OnNextOpen("/dev/ttyUSB0", [this] { m_Machine.Pull(kDevice); });
    EXPECT_EQ(-1, open("/dev/ttyUSB0", O_RDWR | O_NOCTTY));
    EXPECT_EQ(ENOENT, errno);
}

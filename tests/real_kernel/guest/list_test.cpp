// SPDX-License-Identifier: MIT
// What a host sees listed.
#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/kernel_file.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/steering.h"
#include "tests/real_kernel/guest/told_together.h"
#include "tests/real_kernel/guest/tty_events.h"

namespace {

class List : public GuestHost {
  protected:
    /// A device of four ports comes and goes; whether it did so as a whole.
    static bool PlugQuad() {
        Gadget quad(0);
        quad.Ids("0403", "6011", "0800").Texts("FTDI", "Quad", "Q1").AddVendorPorts(4);
        const TtyEvents events;
        const auto start = std::chrono::steady_clock::now();
        quad.PlugIn();
        WaitFor("Quad");
        EXPECT_TRUE(WaitUntil([] { return Find("Quad")->ports.size() == 4; }));
        const Device device = *Find("Quad");
        const bool cameTogether = WasToldTogether(events, "udev", "add", start);
        if (NoticesOf("add") == 1) { // later ports stand behind
            ExpectInOrder(device);
        }
        quad.PullOut();
        EXPECT_TRUE(WaitUntilGone("Quad"));
        return WasToldTogether(events, "kernel", "remove", start) && cameTogether;
    }

    static void ExpectInOrder(const Device& device) {
        EXPECT_TRUE(std::is_sorted(device.ports.begin(), device.ports.end(),
                                   [](const Port& a, const Port& b) { return a.name < b.name; }))
            << device;
    }

    static bool IsListed(const std::string& node) {
        for (const Device& device : Devices()) {
            for (const Port& port : device.ports) {
                if (port.name == node) {
                    return true;
                }
            }
        }
        return false;
    }
};

} // namespace

TEST_F(List, AnAdapterHasNameIdentityPlaceDriverAndSerialNumber) {
    Start();
    Ask("plug 0 A50285BI");
    const Device device = WaitFor("A50285BI");
    Ask("pull 0");
    EXPECT_NE(std::string::npos, device.name.find("A50285BI")) << device;
    for (const char* fact :
         {"bus=usb", "id=0403:6001", "place=1-1", "driver=ftdi_sio", "serial=A50285BI"}) {
        EXPECT_NE(std::string::npos, device.text.find(fact)) << fact << " is not in " << device;
    }
    ASSERT_EQ(1U, device.ports.size()) << device;
    EXPECT_EQ("/dev/ttyUSB0", device.ports[0].name);
    EXPECT_TRUE(WaitUntilGone("A50285BI"));
}

TEST_F(List, WhatIsThereAtTheStartIsListedAndNotTold) {
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    ASSERT_TRUE(WaitUntil([] { return std::filesystem::exists("/dev/ttyACM0"); }));
    Gadget fence(1);
    fence.Texts("Acme", "Fence", "F1").AddAcmPorts(1);
    Start();
    EXPECT_EQ(1U, WaitFor("Modem A1").ports.size());
    fence.PlugIn();
    WaitFor("Fence F1");
    EXPECT_TRUE(notices::WaitForSigns("+")) << notices::Signs();
}

TEST_F(List, ABuiltInPortIsListedAndOnesThatAreNotThereAreNot) {
    ASSERT_EQ("0", ReadKernelFile("/sys/class/tty/ttyS1/type")) << "this machine has no phantoms";
    Start();
    EXPECT_TRUE(IsListed("/dev/ttyS0"));
    for (const char* node :
         {"/dev/ttyS1", "/dev/ttyS2", "/dev/ttyS3", "/dev/tty1", "/dev/console", "/dev/ptmx"}) {
        EXPECT_FALSE(IsListed(node)) << node;
    }
}

TEST_F(List, TextsHoldNoControlCharactersAndKeepUtf8) {
    Start();
    Gadget odd(0);
    odd.Texts("M\303\274ller", "Me\033[31m\303\237 \"%s%n\"\ttool", "S\0011")
        .AddAcmPorts(1)
        .PlugIn();
    const Device device = WaitFor("M\303\274ller");
    for (const std::string& text : {device.name, device.text, LogText()}) {
        EXPECT_EQ(std::string::npos, text.find_first_of("\033\001\t")) << text;
    }
    EXPECT_NE(std::string::npos, device.name.find("\303\237 \"%s%n\"")) << device;
}

// Not every time: where the adapter does not get a processor for 10 ms, its device seems complete.
TEST_F(List, ADeviceOfFourPortsIsToldAtOnceWithItsPortsInOrder) {
    Start();
    bool wasTogether = false;
    for (int i = 0; i < 4 && !wasTogether; ++i) {
        notices::Clear();
        wasTogether = PlugQuad();
    }
    EXPECT_TRUE(wasTogether);
}

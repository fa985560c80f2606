// SPDX-License-Identifier: MIT
// A machine on which no udev runs: the kernel's own events are all there is.
#include <chrono>
#include <filesystem>

#include "tests/harness/log_text.h"
#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/kernel_file.h"
#include "tests/real_kernel/guest/latency.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/steering.h"
#include "tests/real_kernel/guest/told_together.h"
#include "tests/real_kernel/guest/tty_events.h"

namespace {

class WithoutUdev : public GuestHost {
  protected:
    void SetUp() override { ASSERT_FALSE(std::filesystem::exists("/run/udev/control")); }
};

} // namespace

TEST_F(WithoutUdev, AnAdapterHasNameIdentityPlaceDriverAndSerialNumber) {
    Start();
    Ask("plug 0 A50285BI");
    const Device device = WaitFor("A50285BI");
    EXPECT_TRUE(notices::WaitForSigns("+")) << notices::Signs();
    Ask("pull 0");
    for (const char* fact :
         {"bus=usb", "id=0403:6001", "place=1-1", "driver=ftdi_sio", "serial=A50285BI"}) {
        EXPECT_NE(std::string::npos, device.text.find(fact)) << fact << " is not in " << device;
    }
    EXPECT_TRUE(notices::WaitForSigns("+-")) << notices::Signs();
}

TEST_F(WithoutUdev, AReplugWhileOpenKeepsNodeAndBytes) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    Port port = WaitFor("Modem A1").ports.at(0);
    EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
    for (int i = 0; i < 20; ++i) {
        Open(port);
        modem.Authorize(false);
        ASSERT_TRUE(notices::WaitForSigns("-")) << i << ": " << notices::Signs();
        modem.Authorize(true);
        ASSERT_TRUE(notices::TakeSigns("-+")) << i << ": " << notices::Signs();
        const Port again = WaitFor("Modem A1").ports.at(0);
        ASSERT_EQ(port.name, again.name) << "after " << i << " times";
        port = again;
    }
    const FarTerminal far(modem.FarNode());
    const Inbox inbox(0, port.id);
    Open(port);
    far.Send("still here");
    EXPECT_TRUE(inbox.WaitFor("still here")) << inbox.Received();
}

TEST_F(WithoutUdev, ADeviceOfThreePortsIsToldAtOnce) {
    Start();
    bool wasTogether = false;
    for (int i = 0; i < 4 && !wasTogether; ++i) {
        Gadget modem(0);
        modem.Texts("Acme", "Modem", "A1").AddAcmPorts(3);
        const TtyEvents events;
        notices::Clear();
        const auto start = std::chrono::steady_clock::now();
        modem.PlugIn();
        WaitFor("Modem A1");
        EXPECT_TRUE(WaitUntil([] { return Find("Modem A1")->ports.size() == 3; }));
        wasTogether = WasToldTogether(events, "kernel", "add", start);
        modem.PullOut();
        EXPECT_TRUE(WaitUntilGone("Modem A1"));
    }
    EXPECT_TRUE(wasTogether);
}

TEST_F(WithoutUdev, EventsOfOthersAreNoError) {
    Start();
    for (int i = 0; i < 50; ++i) {
        WriteKernelFile("/sys/class/mem/null/uevent", "change");
        WriteKernelFile("/sys/class/tty/ttyS1/uevent", "change");
    }
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    WaitFor("Modem A1");
    EXPECT_TRUE(notices::WaitForSigns("+")) << notices::Signs();
    EXPECT_EQ(0, CountOf(LogText(), "ERRO:")) << LogText();
}

TEST_F(WithoutUdev, NoticesComeSoonAfterTheKernelsLastEvent) {
    Start();
    MeasureNotices("kernel");
}

// SPDX-License-Identifier: MIT
// Devices that go or come in the moment in which they should not.
#include <atomic>
#include <chrono>
#include <thread>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/steering.h"
#include "tests/real_kernel/guest/tty_events.h"

namespace {

constexpr int kReplugs = 20;

using BadMoment = GuestHost;

/// Another device comes, and the host stays inside the notice of it until it may go on.
class SlowHost {
  public:
    SlowHost() {
        notices::OnEach([this] {
            m_Inside = true;
            WaitUntil([this] { return m_MayGoOn.load(); }, std::chrono::seconds(30));
        });
        Ask("plug 0 A50285BI");
        EXPECT_TRUE(WaitUntil([this] { return m_Inside.load(); }));
    }
    ~SlowHost() {
        GoOn();
        notices::OnEach(nullptr);
        Ask("pull 0");
    }
    SlowHost(const SlowHost&) = delete;
    SlowHost& operator=(const SlowHost&) = delete;

    void GoOn() const { m_MayGoOn = true; }

  private:
    std::atomic<bool> m_Inside{false};
    mutable std::atomic<bool> m_MayGoOn{false};
};

} // namespace

TEST_F(BadMoment, ADeviceThatGoesWhileItComesLeavesNothingBehind) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(3);
    const TtyEvents events;
    for (int i = 0; i < 5; ++i) {
        const auto start = std::chrono::steady_clock::now();
        modem.PlugIn();
        ASSERT_TRUE(events.WaitFor("kernel", "add", start));
        modem.PullOut();
    }
    Gadget fence(1);
    fence.Texts("Acme", "Fence", "F1").AddAcmPorts(1).PlugIn();
    WaitFor("Fence F1"); // whatever was under way before it has arrived
    EXPECT_TRUE(WaitUntilGone("Modem A1"));
    EXPECT_EQ(std::string::npos, notices::Signs().find("--")) << notices::Signs();
}

// What a slow host has not been told of yet is one batch: a device goes and another takes its node.
TEST_F(BadMoment, AnotherDeviceOnTheSameNodeIsToldStepByStepToASlowHost) {
    Start();
    Gadget neighbour(2);
    neighbour.Texts("Acme", "Neighbour", "N1").AddAcmPorts(1);
    FarTerminal far(neighbour.FarNode());
    neighbour.PlugIn();
    const Port kept = WaitFor("Neighbour N1").ports.at(0);
    const Inbox inbox(0, kept.id);
    Open(kept);
    Gadget first(0);
    first.Texts("Acme", "First", "A1").AddAcmPorts(1).PlugIn();
    const std::string node = WaitFor("First A1").ports.at(0).name;
    Gadget second(1);
    second.Texts("Acme", "Second", "B1").AddAcmPorts(2);
    const TtyEvents events;
    EXPECT_TRUE(notices::TakeSigns("++")) << notices::Signs();

    const SlowHost host;
    const auto start = std::chrono::steady_clock::now();
    first.PullOut();
    EXPECT_TRUE(events.WaitFor("udev", "remove", start));
    second.PlugIn();
    EXPECT_TRUE(events.WaitFor("udev", "add", start));
    host.GoOn();

    const Device device = WaitFor("Second B1");
    EXPECT_TRUE(WaitUntil([] { return Find("Second B1")->ports.size() == 2; }));
    EXPECT_EQ(node, device.ports.at(0).name);
    EXPECT_FALSE(Find("First A1").has_value());
    EXPECT_TRUE(WaitUntil([] { return notices::Signs().size() >= 3; }));
    EXPECT_EQ("+-+", notices::Signs().substr(0, 3));
    far.Send("still here");
    EXPECT_TRUE(inbox.WaitFor("still here")) << inbox.Received();
}

// The node's number is free as soon as the device has gone, whenever the host hears of it.
TEST_F(BadMoment, APortLetsItsNodeGoBeforeASlowHostHasBeenTold) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    const Port before = WaitFor("Modem A1").ports.at(0);
    Open(before);
    EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
    const SlowHost host;
    modem.Authorize(false);
    EXPECT_TRUE(WaitUntil([] { return DescriptorsOf("/dev/ttyACM") == 0; }));
    const auto start = std::chrono::steady_clock::now();
    const TtyEvents events;
    modem.Authorize(true);
    EXPECT_TRUE(events.WaitFor("udev", "add", start));
    host.GoOn();
    EXPECT_TRUE(notices::WaitForSigns("+-+")) << notices::Signs();
    EXPECT_EQ(before.name, WaitFor("Modem A1").ports.at(0).name);
}

// A port that is opened in the moment in which its device goes must not keep the node's number.
TEST_F(BadMoment, OpeningWhileTheDeviceGoesLeavesNoDescriptorBehind) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    WaitFor("Modem A1");
    EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
    std::atomic<bool> isOver{false};
    std::thread opener([&] {
        while (!isOver) {
            if (const auto device = Find("Modem A1")) {
                KOVAMGR_Open(device->ports.at(0).id);
            }
        }
    });
    for (int i = 0; i < kReplugs; ++i) {
        modem.Authorize(false);
        EXPECT_TRUE(notices::WaitForSigns("-")) << i << ": " << notices::Signs();
        modem.Authorize(true);
        EXPECT_TRUE(notices::TakeSigns("-+")) << i << ": " << notices::Signs();
        EXPECT_EQ("/dev/ttyACM0", WaitFor("Modem A1").ports.at(0).name) << i;
    }
    isOver = true;
    opener.join();
    modem.PullOut();
    EXPECT_TRUE(WaitUntilGone("Modem A1"));
    EXPECT_TRUE(WaitUntil([] { return DescriptorsOf("/dev/ttyACM") == 0; }));
}

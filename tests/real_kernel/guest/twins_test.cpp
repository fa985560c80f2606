// SPDX-License-Identifier: MIT
// Devices that look alike, and ports of one device that do not share its fate.
#include <algorithm>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/notices.h"

namespace {

class Twins : public GuestHost {
  protected:
    /// Plugs two devices in that differ by their place alone.
    static void ExpectDistinctNames(const std::string& serial) {
        Gadget first(0);
        first.Texts("Acme", "Twin", serial).AddAcmPorts(1).PlugIn();
        const Device before = WaitFor("place=" + first.Place());
        Gadget second(1);
        second.Texts("Acme", "Twin", serial).AddAcmPorts(1).PlugIn();
        const Device other = WaitFor("place=" + second.Place());
        const Device after = WaitFor("place=" + first.Place());
        EXPECT_EQ(before.name, after.name);
        EXPECT_EQ(before.ports.at(0).id, after.ports.at(0).id);
        EXPECT_NE(after.name, other.name);
        EXPECT_NE(std::string::npos, other.name.find(second.Place())) << other;
        ExpectTheSecondAlone(first, other);
    }

    static void ExpectTheSecondAlone(Gadget& first, const Device& second) {
        first.PullOut();
        EXPECT_TRUE(WaitUntilGone("place=" + first.Place()));
        EXPECT_EQ(second.name, WaitFor("Twin").name);
    }
};

class Neighbours : public GuestHost {
  protected:
    static bool WaitForLast(char sign) {
        return WaitUntil([&] {
            const std::string signs = notices::Signs();
            return !signs.empty() && signs.back() == sign;
        });
    }

    // By their nodes: udev finishes the ports of a device in any order.
    static std::vector<Port> PortsOf(const std::string& device) {
        std::vector<Port> ports = WaitFor(device).ports;
        std::sort(ports.begin(), ports.end(),
                  [](const Port& one, const Port& other) { return one.name < other.name; });
        return ports;
    }

    static void ExpectToWork(FarTerminal& far, const Inbox& inbox, const Port& port,
                             const std::string& text) {
        const size_t inboxSize = inbox.Received().size();
        const size_t farSize = far.Received().size();
        far.Send(text);
        EXPECT_TRUE(inbox.WaitForSize(inboxSize + text.size())) << port.name;
        EXPECT_EQ(text, inbox.Received().substr(inboxSize)) << port.name;
        EXPECT_TRUE(Send(port, text)) << port.name;
        EXPECT_TRUE(far.WaitForSize(farSize + text.size())) << port.name;
    }
};

} // namespace

TEST_F(Twins, WithoutSerialNumbersHaveDistinctNamesThatStay) {
    Start();
    ExpectDistinctNames("");
}

TEST_F(Twins, WithOneSerialNumberHaveDistinctNamesThatStay) {
    Start();
    ExpectDistinctNames("SAME");
}

TEST_F(Neighbours, OnOneDeviceKeepWorkingWhenAPortBetweenThemGoesAndComes) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(3);
    FarTerminal firstFar(modem.FarNode(0));
    FarTerminal lastFar(modem.FarNode(2));
    modem.PlugIn();
    ASSERT_TRUE(WaitUntil([] {
        const auto device = Find("Modem A1");
        return device.has_value() && device->ports.size() == 3;
    }));
    const std::vector<Port> ports = PortsOf("Modem A1");
    const Inbox first(0, ports[0].id);
    const Inbox last(1, ports[2].id);
    for (const Port& port : ports) {
        Open(port);
    }
    modem.Unbind("cdc_acm", 2);
    EXPECT_TRUE(WaitForLast('-')) << notices::Signs();
    EXPECT_EQ(2U, WaitFor("Modem A1").ports.size());
    ExpectToWork(firstFar, first, ports[0], "without the middle one");
    ExpectToWork(lastFar, last, ports[2], "without the middle one");

    modem.Bind("cdc_acm", 2);
    EXPECT_TRUE(WaitForLast('+')) << notices::Signs();
    const Device again = WaitFor("Modem A1");
    EXPECT_EQ(3U, again.ports.size()) << again;
    ExpectToWork(firstFar, first, ports[0], "with it again");
    ExpectToWork(lastFar, last, ports[2], "with it again");
}

TEST_F(Neighbours, OnAnotherDeviceKeepWorkingWhileDevicesComeAndGo) {
    Start();
    Gadget kept(0);
    kept.Texts("Acme", "Kept", "K1").AddAcmPorts(1);
    FarTerminal far(kept.FarNode());
    kept.PlugIn();
    const Port port = WaitFor("Kept K1").ports.at(0);
    const Inbox inbox(0, port.id);
    Open(port);
    Gadget modem(1);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(3).PlugIn();
    WaitFor("Modem A1");
    for (int i = 0; i < 3; ++i) {
        modem.Authorize(false);
        EXPECT_TRUE(WaitUntilGone("Modem A1"));
        ExpectToWork(far, inbox, port, "while it is away");
        modem.Authorize(true);
        WaitFor("Modem A1");
        ExpectToWork(far, inbox, port, "when it is back");
    }
}

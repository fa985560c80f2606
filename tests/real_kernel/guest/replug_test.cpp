// SPDX-License-Identifier: MIT
// Devices that go and come faster than any hand can plug them.
#include <chrono>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/tty_events.h"

namespace {

constexpr int kReplugs = 20;

class Replug : public GuestHost {
  protected:
    struct Away {
        Port before;
        Port after;
        std::string text; // how long it was away, as the kernel's events say
    };

    /// Takes the driver of an open port away for so long, and expects that the port works again.
    static Away TakeDriverAway(std::chrono::milliseconds time) {
        Gadget modem(0);
        modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1);
        FarTerminal far(modem.FarNode());
        modem.PlugIn();
        Away away{WaitFor("Modem A1").ports.at(0), {}, ""};
        Open(away.before);
        EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
        const TtyEvents events;
        const auto start = std::chrono::steady_clock::now();
        modem.Unbind("cdc_acm", 0);
        WaitUntil([] { return false; }, time); // nothing to wait for but the time
        modem.Bind("cdc_acm", 0);
        EXPECT_TRUE(notices::WaitForSigns("-+")) << notices::Signs();
        away.after = WaitFor("Modem A1").ports.at(0);
        EXPECT_NE(away.before.id, away.after.id);
        away.text =
            "away for " + MillisecondsAway(events, start) + ", came back as " + away.after.name;
        TellFigure("driver taken and given back", away.text);
        ExpectToWork(far, away.after);
        return away;
    }

    static void ExpectToWork(const FarTerminal& far, const Port& port) {
        const Inbox inbox(0, port.id);
        Open(port);
        far.Send("still here");
        EXPECT_TRUE(inbox.WaitFor("still here")) << inbox.Received();
    }

    /// From the kernel's last removal to its last arrival.
    static std::string MillisecondsAway(const TtyEvents& events, TtyEvents::Instant start) {
        const auto removal = events.Latest("kernel", "remove", start);
        const auto arrival = events.Latest("kernel", "add", start);
        if (!removal.has_value() || !arrival.has_value()) {
            return "?";
        }
        const std::chrono::duration<double, std::milli> away = arrival->when - removal->when;
        return std::to_string(away.count()) + " ms";
    }
};

} // namespace

TEST_F(Replug, TwentyTimesGivesAPullOutAndAnInsertionEachUnderTheSameName) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    Port port = WaitFor("Modem A1").ports.at(0);
    EXPECT_EQ("/dev/ttyACM0", port.name);
    EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
    for (int i = 0; i < kReplugs; ++i) {
        Open(port);
        modem.Authorize(false);
        ASSERT_TRUE(notices::WaitForSigns("-")) << i << ": " << notices::Signs();
        modem.Authorize(true);
        ASSERT_TRUE(notices::TakeSigns("-+")) << i << ": " << notices::Signs();
        const Port again = WaitFor("Modem A1").ports.at(0);
        ASSERT_EQ(port.name, again.name) << "after " << i << " times";
        ASSERT_NE(port.id, again.id);
        port = again;
    }
}

TEST_F(Replug, TwentyTimesWithoutWaitingEndsWithTheDeviceThereAndWorking) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    Open(WaitFor("Modem A1").ports.at(0));
    for (int i = 0; i < kReplugs; ++i) {
        modem.Authorize(false);
        modem.Authorize(true);
    }
    Gadget fence(1);
    fence.Texts("Acme", "Fence", "F1").AddAcmPorts(1).PlugIn();
    WaitFor("Fence F1"); // whatever was under way before it has arrived
    const Port port = WaitFor("Modem A1").ports.at(0);
    ExpectToWork(FarTerminal(modem.FarNode()), port);
    EXPECT_EQ(1, DescriptorsOf("/dev/ttyACM"));
}

// Not every time: an emulated machine may not get to it so soon.
TEST_F(Replug, WithinTwentyMillisecondsKeepsTheName) {
    Start();
    bool hasKept = false;
    for (int i = 0; i < 5 && !hasKept; ++i) {
        const Away away = TakeDriverAway(std::chrono::milliseconds(15));
        hasKept = away.before.name == away.after.name;
        EXPECT_TRUE(WaitUntilGone("Modem A1"));
        EXPECT_TRUE(notices::TakeSigns("-+-")) << notices::Signs();
    }
    EXPECT_TRUE(hasKept);
}

TEST_F(Replug, AtOnceIsAPullOutAndAnInsertion) {
    Start();
    TakeDriverAway(std::chrono::milliseconds(0));
}

// SPDX-License-Identifier: MIT
// Bytes on their way, with nothing lost.
#include <sys/ioctl.h>
#include <unistd.h>

#include <future>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/pattern.h"
#include "tests/real_kernel/guest/steering.h"

namespace {

using Transfer = GuestHost;

} // namespace

TEST_F(Transfer, AMebibyteGoesBothWaysThroughAnAdapter) {
    Start();
    Ask("plug 0 A50285BI");
    const Port port = WaitFor("A50285BI").ports.at(0);
    const Inbox inbox(0, port.id);
    Open(port);
    const std::string bytes = Pattern(kMebibyte);
    Ask("send 0 " + std::to_string(bytes.size()));
    EXPECT_TRUE(Send(port, bytes));
    Ask("expect 0 " + std::to_string(bytes.size()));
    inbox.WaitForSize(bytes.size());
    EXPECT_EQ("all", Compared(inbox.Received(), bytes));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Close(port.id));
    Ask("pull 0");
    EXPECT_TRUE(WaitUntilGone("A50285BI"));
}

TEST_F(Transfer, AMebibyteGoesBothWaysThroughAModem) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1);
    FarTerminal far(modem.FarNode());
    modem.PlugIn();
    const Port port = WaitFor("Modem A1").ports.at(0);
    const Inbox inbox(0, port.id);
    Open(port);
    const std::string bytes = Pattern(kMebibyte);
    auto sending = std::async(std::launch::async, [&] { far.Send(bytes); });
    EXPECT_TRUE(Send(port, bytes));
    sending.get();
    far.WaitForSize(bytes.size());
    inbox.WaitForSize(bytes.size());
    EXPECT_EQ("all", Compared(far.Received(), bytes));
    EXPECT_EQ("all", Compared(inbox.Received(), bytes));
}

TEST_F(Transfer, BytesThatWaitAtTheOpenAreDelivered) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1);
    FarTerminal far(modem.FarNode());
    modem.PlugIn();
    const Port port = WaitFor("Modem A1").ports.at(0);
    const int former = OpenRaw(port.name);
    far.Send("early ");
    int waiting = 0;
    ASSERT_TRUE(WaitUntil([&] { return ioctl(former, FIONREAD, &waiting) == 0 && waiting == 6; }));
    const Inbox inbox(0, port.id);
    Open(port);
    close(former);
    far.Send("late");
    EXPECT_TRUE(inbox.WaitFor("early late")) << inbox.Received();
}

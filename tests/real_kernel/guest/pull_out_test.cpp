// SPDX-License-Identifier: MIT
// Devices that are pulled out while their ports are in use, and peers that do not read.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <future>

#include "tests/harness/log_text.h"
#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/pattern.h"
#include "tests/real_kernel/guest/steering.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

class PullOut : public GuestHost {
  protected:
    // A session's leader that has no terminal would make the next one that it opens its own, and
    // die with it.
    void SetUp() override { ASSERT_NE(-1, setsid()); }

    /// Sends until the port takes no more.
    static void Fill(const Port& port) {
        const std::string piece = Pattern(4096);
        const auto takesNoMore = [&] {
            const auto size = static_cast<long>(piece.size());
            return KOVAMGR_Write(port.id, piece.data(), size, 0, nullptr) < size;
        };
        ASSERT_TRUE(WaitUntil(takesNoMore, std::chrono::seconds(20)));
    }
};

} // namespace

TEST_F(PullOut, WhileOpenEndsTheDescriptorAndThePortIsSilentFromThenOn) {
    Start();
    Ask("plug 0 A50285BI");
    const Port port = WaitFor("A50285BI").ports.at(0);
    const Inbox inbox(0, port.id);
    Open(port);
    EXPECT_EQ(-1, open("/dev/tty", O_RDWR | O_CLOEXEC)) << "the port is this process's terminal";
    EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
    Ask("pull 0");
    EXPECT_TRUE(notices::WaitForSigns("-")) << notices::Signs();
    EXPECT_TRUE(WaitUntil([] { return DescriptorsOf("/dev/ttyUSB") == 0; }));
    EXPECT_FALSE(Find("A50285BI").has_value());
    EXPECT_EQ(KOVAMGR_ERR_PARAM, KOVAMGR_Open(port.id));
    EXPECT_FALSE(Send(port, "x"));
    EXPECT_GE(1, CountOf(LogText(), "Read")) << LogText();
}

TEST_F(PullOut, EndsAWriteThatIsUnderWay) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    const Port port = WaitFor("Modem A1").ports.at(0);
    Open(port);
    Fill(port);
    EXPECT_TRUE(notices::TakeSigns("+")) << notices::Signs();
    const auto start = Clock::now();
    auto writing = std::async(std::launch::async,
                              [&] { return KOVAMGR_Write(port.id, "more", 4, 0, nullptr); });
    modem.PullOut();
    ASSERT_EQ(std::future_status::ready, writing.wait_for(std::chrono::seconds(10)));
    EXPECT_GT(4, writing.get());
    EXPECT_GT(2.0, SecondsSince(start)) << "seconds that the write took";
    EXPECT_TRUE(notices::WaitForSigns("-")) << notices::Signs();
    TellFigure("pull-out during a write", std::to_string(SecondsSince(start)) + " s to the notice");
    EXPECT_EQ(0, DescriptorsOf("/dev/ttyACM"));
}

TEST_F(PullOut, AWriteThatNobodyTakesEndsAfterASecond) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    const Port port = WaitFor("Modem A1").ports.at(0);
    Open(port);
    Fill(port);
    const auto start = Clock::now();
    const int count = KOVAMGR_Write(port.id, "more", 4, 0, nullptr);
    EXPECT_GT(4, count);
    EXPECT_GT(2.0, SecondsSince(start));
}

// The kernel alone would wait for 30 seconds.
TEST_F(PullOut, AClosingPortWaitsForAPeerThatDoesNotReadForASecond) {
    Start();
    Gadget modem(0);
    modem.Texts("Acme", "Modem", "A1").AddAcmPorts(1).PlugIn();
    const Port port = WaitFor("Modem A1").ports.at(0);
    Open(port);
    Fill(port);
    const auto start = Clock::now();
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Close(port.id));
    TellFigure("close with a peer that does not read", std::to_string(SecondsSince(start)) + " s");
    EXPECT_GT(2.5, SecondsSince(start));
    EXPECT_EQ(0, DescriptorsOf("/dev/ttyACM"));
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Open(port.id)) << "and can be opened again";
    Fill(port);
    EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    EXPECT_GT(7.5, SecondsSince(start)) << "nor does a release wait longer";
}

// SPDX-License-Identifier: MIT
//
// What a scenario lets happen, and when, as a host sees it.
#include <chrono>
#include <string>

#include "tests/adapters/far_program.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/adapters/simulated_host.h"
#include "tests/harness/log_text.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

constexpr std::chrono::seconds kBound{60};

class Simulator : public SimulatedHost {
  protected:
    bool WaitForDevices(const std::string& devices) const {
        return WaitUntil([&] { return m_Adapter.DevicesText() == devices; }, kBound);
    }
};

} // namespace

TEST_F(Simulator, ADeviceIsPulledAndPluggedAtItsTime) {
    Run("'at 100ms pull modem', 'at 200ms plug modem'");
    EXPECT_EQ("modem(p1 p2)", m_Adapter.DevicesText());
    EXPECT_TRUE(WaitForDevices(""));
    EXPECT_TRUE(WaitForDevices("modem(p1 p2)"));
    EXPECT_EQ("pull modem\nplug modem\n", Track("time"));
}

TEST_F(Simulator, WhatIsToHappenAtTimeZeroHasHappenedWhenTheFirstCallReturns) {
    Run("'at 0s pull modem'");
    EXPECT_EQ("", m_Adapter.DevicesText());
}

TEST_F(Simulator, APortIsUnpluggedAndPluggedAtItsTime) {
    Run("'at 0s unplug-port p1', 'at 100ms plug-port p1'");
    EXPECT_EQ("modem(p2)", m_Adapter.DevicesText());
    EXPECT_TRUE(WaitForDevices("modem(p1 p2)"));
}

TEST_F(Simulator, ADeviceComesBackWithAnotherPort) {
    Run("'at 0s pull modem', 'at 0s switch modem update', 'at 0s plug modem'", R"(
[[device]]
name = "modem"
mode = "normal"
[[device.port]]
name = "p1"
mode = "normal"
[[device.port]]
name = "loader"
mode = "update"
)");
    EXPECT_EQ("modem(loader)", m_Adapter.DevicesText());
}

TEST_F(Simulator, EveryRepeatsBetweenItsBounds) {
    Run("'every 10ms from 20ms until 50ms replug modem'", kTwoPorts, "end = '60ms'");
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ("replug modem\nreplug modem\nreplug modem\n", Track("time"));
}

TEST_F(Simulator, NothingComesByItselfAfterTheEnd) {
    Run("'every 10ms send \"x\" to p1', 'at 1s pull modem'", kTwoPorts, "end = '35ms'");
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ("send \"x\" to p1\nsend \"x\" to p1\nsend \"x\" to p1\n", Track("time"));
}

TEST_F(Simulator, APeriodicFarEndIsSilentAfterTheEnd) {
    Run("", R"(
[[device]]
name = "d"
[[device.port]]
name = "p1"
far = "periodic"
send = "x"
every_ms = 1
)",
        "end = '20ms'");
    const int handle = Open("p1");
    ASSERT_TRUE(WaitForEnd());
    std::string rest;
    ASSERT_TRUE(WaitUntil([&] { return (rest = m_Adapter.ReadText(handle)).empty(); }, kBound));
    ASSERT_TRUE(WaitForTime(0.2));
    EXPECT_EQ("", m_Adapter.ReadText(handle));
}

TEST_F(Simulator, WhatIsSentReachesTheHost) {
    Run("'at 200ms send \"\\x00\\xffa\" to p1 3 times'");
    const int handle = Open("p1");
    const std::string once("\0\xff"
                           "a",
                           3);
    EXPECT_EQ(once + once + once, m_Adapter.ReadUntil(handle, once + once + once));
}

TEST_F(Simulator, WhatIsSentToAClosedPortIsLost) {
    Run("'at 20ms send \"lost\" to p1'");
    ASSERT_TRUE(WaitForTime(0.1));
    const int handle = Open("p1");
    ASSERT_TRUE(WaitForTime(0.2));
    EXPECT_EQ("", m_Adapter.ReadText(handle));
}

TEST_F(Simulator, AnExternalFarEndCanBeHelpedByTheScenario) {
    Run("'on \"hi\\r\" from p1 reply \"ho\\r\"'", R"(
[[device]]
name = "d"
[[device.port]]
name = "p1"
)");
    const int handle = Open("p1");
    const FarProgram program(PortLink("p1"));
    EXPECT_EQ(3, m_Adapter.WriteText(handle, "hi\r"));
    EXPECT_EQ("ho\r", m_Adapter.ReadUntil(handle, "ho\r"));
    EXPECT_EQ("hi\r", program.Receive(3));
}

TEST_F(Simulator, BytesAreAnsweredHoweverTheyArriveInPieces) {
    Run("'on \"AT\\r\" from p1 reply \"OK\"', 'on \"\\r\" from p1 reply \"ERROR\"'");
    const int handle = Open("p1");
    for (const char byte : std::string("AT\rATX\rAT\r")) {
        ASSERT_EQ(1, m_Adapter.WriteText(handle, std::string(1, byte)));
    }
    EXPECT_EQ("OKERROROK", m_Adapter.ReadUntil(handle, "OKERROROK"));
    EXPECT_EQ(10, m_Adapter.WriteText(handle, "AT\rATX\rAT\r"));
    EXPECT_EQ("OKERROROK", m_Adapter.ReadUntil(handle, "OKERROROK"));
    const std::string once = "got \"AT\\r\"\nsent \"OK\"\n";
    const std::string all = once + "got \"\\r\"\nsent \"ERROR\"\n" + once;
    EXPECT_EQ("open\n" + all + all, Track("p1"));
}

TEST_F(Simulator, AnOpeningBeginsANewStream) {
    Run("'on \"AT\\r\" from p1 reply \"OK\"'");
    m_Adapter.WriteText(Open("p1"), "A");
    m_Adapter.WriteText(Open("p1"), "T\r");
    EXPECT_EQ("open\nopen\n", Track("p1"));
}

TEST_F(Simulator, AnAnswerComesAfterItsTimeAndNotBefore) {
    Run("'on \"q\" from p1 reply \"a\" after 300ms'");
    const int handle = Open("p1");
    const auto start = std::chrono::steady_clock::now();
    m_Adapter.WriteText(handle, "q");
    EXPECT_EQ("a", m_Adapter.ReadUntil(handle, "a"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(300));
}

TEST_F(Simulator, TheHostsBytesCanMoveADevice) {
    Run("'on \"reset\" from p1 replug modem after 10ms', 'on \"off\" from p1 pull modem'");
    NoticeRecorder recorder(m_Adapter);
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    m_Adapter.WriteText(Open("p1"), "reset");
    ASSERT_TRUE(recorder.WaitForCount(2));
    m_Adapter.WriteText(Open("p1"), "off");
    ASSERT_TRUE(recorder.WaitForCount(3));
    EXPECT_EQ("open\ngot \"reset\"\nreplug modem\nopen\ngot \"off\"\npull modem\n", Track("p1"));
    End();
}

TEST_F(Simulator, ACallCanCauseAnything) {
    Run("'on 2nd open of p1 send \"welcome back\" to p1', 'on close of p1 send \"bye\" to p2'");
    const int other = Open("p2");
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Close(Open("p1")));
    EXPECT_EQ("bye", m_Adapter.ReadUntil(other, "bye"));
    EXPECT_EQ("welcome back", m_Adapter.ReadUntil(Open("p1"), "back"));
    EXPECT_EQ("open\nclose\nsend \"bye\" to p2\nopen\nsent \"welcome back\"\n", Track("p1"));
}

TEST_F(Simulator, AnActionThatCannotBeDoneIsNotedWithItsReason) {
    Run("'at 0s pull modem', 'at 0s pull modem'");
    EXPECT_EQ("pull modem\npull modem (device is not plugged in)\n", Track("time"));
}

TEST_F(Simulator, AStalledPortTakesNothingUntilItIsResumed) {
    Run("'at 0s stall p1'");
    const int handle = Open("p1");
    EXPECT_EQ(0, m_Adapter.WriteText(handle, "x"));
    ASSERT_EQ("ok", Command("replug modem"));
    const int again = Open("p1");
    EXPECT_EQ(0, m_Adapter.WriteText(again, "x"));
    ASSERT_EQ("ok", Command("resume p1"));
    EXPECT_EQ(1, m_Adapter.WriteText(again, "x"));
}

TEST_F(Simulator, ABrokenPortIsListedAndDoesNotWorkUntilItIsMended) {
    Run("");
    const int handle = Open("p1");
    ASSERT_EQ("ok", Command("break p1"));
    EXPECT_EQ("modem(p1 p2)", m_Adapter.DevicesText());
    char buffer[8];
    long count = 0;
    EXPECT_EQ(OS_ADAPT_FAILED, m_Adapter.Read(handle, buffer, sizeof buffer, &count));
    EXPECT_EQ("", m_Adapter.ReadText(handle));
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("p1"));
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
    ASSERT_EQ("ok", Command("mend p1"));
    EXPECT_EQ(1, m_Adapter.WriteText(Open("p1"), "x"));
}

TEST_F(Simulator, ADeviceThatComesAndGoesAHundredTimesASecondLeavesNothingBehind) {
    Run("'every 10ms replug modem'", kTwoPorts, "end = '10s'\nspeed = 2");
    Open("p1");
    const size_t descriptors = OpenDescriptors();
    const size_t threads = RunningThreads();
    NoticeRecorder recorder(m_Adapter);
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    while (Status("state") != "ended") {
        m_Adapter.WriteText(m_Adapter.OpenPort("p1"), "x"); // may be gone again
    }
    EXPECT_EQ(1000, CountOf(Track("time"), "replug modem\n"));
    EXPECT_EQ(0, CountOf(Track("time"), "("));
    EXPECT_EQ("ok", Command("replug modem"));
    EXPECT_EQ("modem(p1 p2)", m_Adapter.DevicesText());
    Open("p1");
    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= descriptors; }));
    End();
    EXPECT_LT(OpenDescriptors(), descriptors);
    EXPECT_LT(RunningThreads(), threads);
}

// SPDX-License-Identifier: MIT
//
// What a host calls from inside a read callback.
#include "tests/api/host_test.h"

namespace {

class FromReadCallback : public HostTest {
  protected:
    // Runs this in a read callback of port 1, "COM1", which is open. Port 2, "COM2", is not.
    void Run(std::function<void()> action) {
        InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        m_Recorder.During("read 1", std::move(action));
        ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
        ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<2>, 1), 20000);
        ASSERT_EQ(KOVAMGR_Open(1), 20000);
        m_Fake->PushData("COM1", "a");
        ASSERT_TRUE(WaitUntil([this] { return m_Fake->PendingReads("COM1") == 0; }));
        ASSERT_EQ(KOVAMGR_GetPortState(1), 20050); // waits for the end of the sweep
    }
};

} // namespace

TEST_F(FromReadCallback, AnotherPortIsOpenedAndClosed) {
    Run([] {
        EXPECT_EQ(KOVAMGR_Open(2), 20000);
        EXPECT_EQ(KOVAMGR_Close(2), 20000);
    });
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1", "Open COM2 -> 2", "Close 2"}));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 2: a"}));
}

TEST_F(FromReadCallback, ThePortItselfIsClosed) {
    Run([] { EXPECT_EQ(KOVAMGR_Close(1), 20000); });
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1", "Close 1"}));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 2: a"}));
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 20006);
}

TEST_F(FromReadCallback, AnAnswerIsWritten) {
    Run([] { EXPECT_EQ(KOVAMGR_Write(1, "answer", 6, 0, nullptr), 6); });
    EXPECT_EQ(m_Fake->Written("COM1"), (Lines{"answer"}));
}

TEST_F(FromReadCallback, StateAndPortsAreAskedFor) {
    Run([] {
        EXPECT_EQ(KOVAMGR_GetPortState(1), 20050);
        EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
    });
    EXPECT_EQ(m_Recorder.Count(), 2u);
}

TEST_F(FromReadCallback, ACallbackRemovesItselfAndItsSuccessorIsCalled) {
    Run([] { EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 1), 20000); });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 2: a"}));
    m_Fake->PushData("COM1", "b");
    ASSERT_TRUE(WaitForTold(3));
    EXPECT_EQ(m_Recorder.Told().back(), "read 2: b");
}

TEST_F(FromReadCallback, ACallbackIsAdded) {
    Run([] { EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<3>, 1), 20000); });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 2: a", "read 3: a"}));
}

TEST_F(FromReadCallback, ReleaseWritesOneErrorAndChangesNothing) {
    Run([] { EXPECT_EQ(KOVAMGR_Release(), 20000); });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 2: a"}));
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 3);
    EXPECT_EQ(CountOf(LogText(m_Scratch), "] ERRO:"), 1);
    EXPECT_EQ(CountOf(LogText(m_Scratch), "Release()"), 0);
    EXPECT_EQ(KOVAMGR_Release(), 20000) << "works from the host's own thread";
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
}

TEST_F(FromReadCallback, InitIsThePlainSecondOne) {
    Run([this] { EXPECT_EQ(Init(), 20000); });
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1"}));
    EXPECT_EQ(CountOf(LogText(m_Scratch), "] ERRO:"), 0);
}

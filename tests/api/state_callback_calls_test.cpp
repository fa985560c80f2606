// SPDX-License-Identifier: MIT
//
// What a host calls from inside a device-state callback.
#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"

namespace {

class FromStateCallback : public HostTest {
  protected:
    // Runs this in a device-state callback, told of an insertion. Port 1, "COM1", is open; port 2,
    // "COM2", is the one that comes.
    void Run(std::function<void()> action) {
        InitWith(FakeDevices().Device("Modem").Port("COM1"));
        ASSERT_EQ(KOVAMGR_Open(1), 20000);
        m_Recorder.During("state 1", std::move(action));
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<2>), 20000);
        FakeDevices().Device("Modem").Port("COM1").Port("COM2").Apply(*m_Fake);
        CaptureStdout output;
        EXPECT_TRUE(m_Fake->NotifyOnThread(0));
    }
};

} // namespace

TEST_F(FromStateCallback, TheNewPortIsSeenOpenedWrittenToAndClosed) {
    Run([] {
        EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
        EXPECT_EQ(KOVAMGR_GetPortState(2), 20050);
        EXPECT_EQ(KOVAMGR_Open(2), 20000);
        EXPECT_EQ(KOVAMGR_Write(2, "abc", 3, 0, nullptr), 3);
        EXPECT_EQ(KOVAMGR_Close(2), 20000);
    });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200", "state 2: 20200"}));
    EXPECT_EQ(m_Fake->Written("COM2"), (Lines{"abc"}));
}

TEST_F(FromStateCallback, ReadCallbacksAreAddedAndRemoved) {
    Run([] {
        EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 2), 20000);
        EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<2>, 2), 20000);
        EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 2), 20000);
        EXPECT_EQ(KOVAMGR_Open(2), 20000);
    });
    m_Fake->PushData("COM2", "hello");
    ASSERT_TRUE(WaitForTold(3));
    EXPECT_EQ(m_Recorder.Told().back(), "read 2: hello");
}

TEST_F(FromStateCallback, StateCallbacksAreAddedForTheNoticeUnderWay) {
    Run([] { EXPECT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<3>), 20000); });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200", "state 2: 20200", "state 3: 20200"}));
}

TEST_F(FromStateCallback, ACallbackThatRemovesItselfCostsItsSuccessorThatNotice) {
    Run([] { EXPECT_EQ(KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>), 20000); });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200"}));
    m_Fake->NotifyOnThread(5);
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200", "state 2: 20205"}));
}

TEST_F(FromStateCallback, ReleaseWritesOneErrorAndChangesNothing) {
    Run([] { EXPECT_EQ(KOVAMGR_Release(), 20000); });
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200", "state 2: 20200"}));
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 3);
    EXPECT_TRUE(m_Fake->IsRegistered());
    EXPECT_EQ(CountOf(LogText(m_Scratch), "] ERRO:"), 1);
    EXPECT_EQ(KOVAMGR_Release(), 20000) << "works from the host's own thread";
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
}

TEST_F(FromStateCallback, InitIsThePlainSecondOne) {
    Run([this] { EXPECT_EQ(Init(), 20000); });
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1, COM2 = 2"}));
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Open COM1 -> 1", "Enum 4"}));
    EXPECT_EQ(CountOf(LogText(m_Scratch), "] ERRO:"), 0);
}

TEST_F(FromStateCallback, ReleaseAfterANoticeOnTheHostsOwnThreadWorks) {
    InitWith(FakeDevices());
    CaptureStdout output;
    ASSERT_TRUE(m_Fake->Notify(0)) << "on this thread, that is inside a callback no longer";
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(KOVAMGR_Open(1), 20003);
}

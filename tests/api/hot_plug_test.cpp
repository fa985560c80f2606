// SPDX-License-Identifier: MIT
#include <atomic>
#include <thread>

#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"

namespace {

class HotPlug : public HostTest {
  protected:
    // This is attached now, and the library is told so.
    void Notify(int status, const FakeDevices& devices) {
        devices.Apply(*m_Fake);
        CaptureStdout output;
        EXPECT_TRUE(m_Fake->NotifyOnThread(status));
    }
};

} // namespace

TEST_F(HotPlug, AnInsertionAddsPortsAndTellsTheHost) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    Notify(0, FakeDevices().Device("Reader").Port("COM2").Device("Modem").Port("COM1"));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200"}));
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1", "Reader: COM2 = 2"}));
}

TEST_F(HotPlug, APullOutRemovesPortsAndTellsTheHost) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Device("Reader").Port("COM2"));
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    m_Fake->ClearJournal();
    Notify(1, FakeDevices().Device("Reader").Port("COM2"));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20201"}));
    EXPECT_EQ(Devices(), (Lines{"Reader: COM2 = 2"}));
    EXPECT_EQ(KOVAMGR_Open(1), 20001);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Close 1"}));
}

TEST_F(HotPlug, AnUnregisteredStateCallbackIsNotToldAnyMore) {
    InitWith(FakeDevices());
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<2>), 20000);
    ASSERT_EQ(KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>), 20000);
    Notify(5, FakeDevices());
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 2: 20205"}));
}

TEST_F(HotPlug, AnUnregistrationWaitsForTheNoticeUnderWay) {
    InitWith(FakeDevices());
    std::atomic<bool> isInside{false};
    m_Recorder.During("state 1", [&] {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(100));
        isInside = false;
    });
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    std::thread notifier([this] { m_Fake->Notify(5); });
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    EXPECT_EQ(KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>), 20000);
    EXPECT_FALSE(isInside);
    notifier.join();
}

TEST_F(HotPlug, AReleaseWaitsForTheNoticeUnderWay) {
    InitWith(FakeDevices());
    std::atomic<bool> isInside{false};
    m_Recorder.During("state 1", [&] {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(100));
        isInside = false;
    });
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    std::thread notifier([this] { m_Fake->Notify(5); });
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_FALSE(isInside);
    notifier.join();
}

TEST_F(HotPlug, APortThatComesBackHasANewNumberAndNoCallbacks) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    Notify(1, FakeDevices());
    Notify(0, FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 2"}));
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<2>, 2), 20000);
    m_Fake->PushData("COM1", "hello");
    ASSERT_EQ(KOVAMGR_Open(2), 20000);
    ASSERT_TRUE(WaitForTold(1));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 2: hello"}));
}

TEST_F(HotPlug, ANoticeAfterReleaseReachesNobody) {
    InitWith(FakeDevices());
    ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    m_Fake->KeepNotifyingAfterUnRegister(true);
    ASSERT_EQ(KOVAMGR_Release(), 20000);
    m_Fake->ClearJournal();
    EXPECT_TRUE(m_Fake->NotifyOnThread(0));
    EXPECT_EQ(m_Recorder.Count(), 0u);
    EXPECT_TRUE(m_Fake->Journal().empty());
}

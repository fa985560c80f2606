// SPDX-License-Identifier: MIT
//
// Notifications that come before there is a manager, while one goes, and afterwards.
#include <atomic>
#include <thread>

#include "tests/harness/capture_stdout.h"
#include "tests/unit/manager/manager_test.h"

namespace {

int Notify(int status) {
    return CKOVASMgrPort::ProcessDeviceState(static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(status));
}

using LateNotification = ManagerTest;

} // namespace

TEST(EarlyNotification, BeforeThereIsAManagerIsRefusedInSilence) {
    ScratchDirectory scratch("complete");
    KOVASMGR_LOG_INIT(scratch.LogDirectory().c_str());
    CaptureStdout output;
    EXPECT_EQ(Notify(0), -1);
    EXPECT_EQ(Notify(1), -1);
    EXPECT_EQ(Notify(5), -1);
    EXPECT_EQ(output.Text(), "");
    EXPECT_EQ(LogText(scratch), "");
}

TEST_F(LateNotification, ToAManagerThatIsNotInitialisedIsTaken) {
    EXPECT_EQ(Notify(5), 0);
    EXPECT_EQ(Notify(0), 0);
    EXPECT_EQ(NewLog(), Info("Enter DetermineAddPort()") +
                            Info("Getting interface of OS_ADAPT_EnumDevicePortInfo failed."));
}

TEST_F(LateNotification, DuringRegistrationIsTakenWhenInitLetsItGoOn) {
    std::thread notifier;
    m_Fake->SetHook(FakeCall::kRegister, [&] {
        FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
        notifier = std::thread([] { EXPECT_EQ(Notify(0), 0); });
    });
    ASSERT_EQ(m_Manager.Init(), 20000);
    notifier.join();
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
}

TEST_F(LateNotification, AfterReleaseIsRefusedInSilence) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->KeepNotifyingAfterUnRegister(true);
    ASSERT_EQ(m_Manager.Release(), 20000);
    NewLog();
    m_Fake->ClearJournal();
    CaptureStdout output;
    EXPECT_TRUE(m_Fake->NotifyOnThread(0)) << "an adapter that does not stop";
    EXPECT_EQ(Notify(1), -1);
    EXPECT_EQ(output.Text(), "");
    EXPECT_EQ(NewLog(), "");
    EXPECT_TRUE(m_Fake->Journal().empty());
    EXPECT_TRUE(Ports().empty());
}

TEST_F(LateNotification, AfterTheManagerIsGoneIsRefusedInSilence) {
    InitWith(FakeDevices());
    CKOVASMgrPort::ReleaseInstance();
    CaptureStdout output;
    EXPECT_EQ(Notify(0), -1);
    EXPECT_EQ(output.Text(), "");
}

TEST_F(LateNotification, WhileReleaseUnregistersLeavesNothingBehind) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    m_Fake->SetHook(FakeCall::kUnRegister, [this] {
        EXPECT_TRUE(Ports().empty()) << "closed and forgotten by then";
        std::thread([] { EXPECT_EQ(Notify(0), 0); }).join();
        EXPECT_EQ(PortLines(), (Lines{"COM1 = 2"})) << "found again by the notification";
    });
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(m_Fake->Calls(FakeCall::kUnRegister), 1);
    EXPECT_TRUE(Ports().empty());
    EXPECT_TRUE(Tree().empty());
}

TEST_F(LateNotification, ThatIsUnderWayIsWaitedForByReleaseWithoutALock) {
    InitWith(FakeDevices());
    ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    std::atomic<bool> isReleased{false};
    std::thread releaser;
    m_Recorder.During("state 1", [&] {
        m_Recorder.During("state 1", {});
        releaser = std::thread([&] {
            EXPECT_EQ(m_Manager.Release(), 20000);
            isReleased = true;
        });
        EXPECT_TRUE(WaitUntil([] { return Notify(5) == -1; })) << "the gate closes";
        EXPECT_FALSE(WaitUntil([&] { return isReleased.load(); }, std::chrono::milliseconds(100)));
        EXPECT_EQ(m_Manager.GetPortState(1), 20053) << "the port lock is free";
    });
    m_Fake->KeepNotifyingAfterUnRegister(true);
    ASSERT_TRUE(m_Fake->NotifyOnThread(5));
    EXPECT_TRUE(WaitUntil([&] { return isReleased.load(); }));
    releaser.join();
}

TEST_F(LateNotification, InsideANotificationIsTakenAsWell) {
    InitWith(FakeDevices());
    ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    std::atomic<int> depth{0};
    m_Recorder.During("state 1", [&] {
        if (++depth < 3) {
            EXPECT_EQ(Notify(5 + depth), 0);
        }
    });
    ASSERT_TRUE(m_Fake->NotifyOnThread(5));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20205", "state 1: 20206", "state 1: 20207"}));
}

TEST_F(LateNotification, ToTheNextManagerBeforeItsInitCallsNoAdapterOfTheFormerOne) {
    InitWith(FakeDevices());
    CKOVASMgrPort::ReleaseInstance();
    CKOVASMgrPort::GetInstance();
    NewLog();
    m_Fake->ClearJournal();
    EXPECT_EQ(Notify(0), 0);
    EXPECT_EQ(Notify(1), 0);
    EXPECT_TRUE(m_Fake->Journal().empty());
    EXPECT_EQ(NewLog(), Info("Enter DetermineAddPort()") +
                            Info("Getting interface of OS_ADAPT_EnumDevicePortInfo failed.") +
                            Info("Enter DetermineSubtractPort()") +
                            Info("Getting interface of OS_ADAPT_EnumDevicePortInfo failed."));
}

TEST_F(LateNotification, ToTheManagerAfterTheNextIsTakenAgain) {
    InitWith(FakeDevices());
    CKOVASMgrPort::ReleaseInstance();
    CKOVASMgrPort* const next = CKOVASMgrPort::GetInstance();
    ASSERT_EQ(next->Init(), 20000);
    ASSERT_EQ(next->RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    EXPECT_EQ(Notify(5), 0);
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20205"}));
}

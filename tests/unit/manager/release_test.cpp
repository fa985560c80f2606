// SPDX-License-Identifier: MIT
#include <atomic>
#include <thread>

#include "tests/unit/manager/manager_test.h"

namespace {

const std::string kEnter = Info("ENTER CKOVASMgrPort::Release()");
const std::string kLeave = Info("LEAVE CKOVASMgrPort::Release()");
const std::string kBegin = Info("Begin m_ReadThread.EndThread()");
const std::string kEnd = Info("End m_ReadThread.EndThread()");
const std::string kExit = Info("ReadThread() Exit \n");

class ManagerRelease : public ManagerTest {
  protected:
    bool IsThreadRunning() { return ManagerProbe::ReadThreadObject(m_Manager).IsRunning(); }
};

} // namespace

TEST_F(ManagerRelease, OfAnUninitialisedManagerIsOneLineAndAFailure) {
    EXPECT_EQ(m_Manager.Release(), 20003);
    EXPECT_EQ(NewLog(), kEnter);
}

TEST_F(ManagerRelease, LogsEachStep) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Port("COM3"));
    ASSERT_EQ(m_Manager.Open(3), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    // A sweep that began before Release: it ends between the two lines about the thread.
    m_Fake->Block(FakeCall::kRead, FakeBlock::kInRead);
    ASSERT_TRUE(WaitUntil([this] { return m_Fake->Blocked() == 1; }));
    std::thread unblocker([this] {
        WaitUntil([this] { return CountOf(LogText(m_Scratch), kBegin) == 1; });
        m_Fake->Unblock();
    });

    EXPECT_EQ(m_Manager.Release(), 20000);

    unblocker.join();
    EXPECT_EQ(NewLog(), kEnter + kBegin + kExit + kEnd + Info("Close port:1 succeeded.") +
                            Info("Close port:3 succeeded.") + kLeave);
}

TEST_F(ManagerRelease, StopsTheThreadEmptiesTheListsAndKeepsTheAdapterLoaded) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 0);
    EXPECT_EQ(ManagerProbe::ReadThreadRun(m_Manager), 0);
    EXPECT_FALSE(IsThreadRunning());
    EXPECT_TRUE(Ports().empty());
    EXPECT_TRUE(Tree().empty());
    EXPECT_TRUE(ManagerProbe::DevStateCallbacks(m_Manager).empty());
    ASSERT_NE(ManagerProbe::OSAdaptLib(m_Manager), nullptr);
    EXPECT_NE(ManagerProbe::OSAdaptLib(m_Manager)->resolve("OS_ADAPT_Read"), nullptr);
}

TEST_F(ManagerRelease, ClosesEachOpenPortOnceInListOrderAndThenUnregisters) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Port("COM3").Port("COM4"));
    ASSERT_EQ(m_Manager.Open(4), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.Open(3), 20000);
    ASSERT_EQ(m_Manager.Close(1), 20000);
    m_Fake->ClearJournal();
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Close 3", "Close 1", "UnRegister"}));
    EXPECT_EQ(m_Fake->OpenHandles(), 0u);
}

TEST_F(ManagerRelease, ClosesBothPortsThatShareAnIdentifier) {
    InitWith(FakeDevices().Device("Modem").Port("COM1", 7).Port("COM2", 7));
    ASSERT_EQ(m_Manager.Open(7), 20000);
    {
        JMutexGuard lock(ManagerProbe::PortMutex(m_Manager));
        ManagerProbe::PreparedPorts(m_Manager).at(1).hPort = 22;
    }
    m_Fake->ClearJournal();
    NewLog();
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Close 1", "Close 22", "UnRegister"}));
    EXPECT_EQ(CountOf(NewLog(), Info("Close port:7 succeeded.")), 2);
}

TEST_F(ManagerRelease, TriesAFailingCloseOnceAndGoesOn) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.Open(2), 20000);
    m_Fake->ClearJournal();
    NewLog();
    m_Fake->SetResult(FakeCall::kClose, OS_ADAPT_FAILED);
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Close 1 = 30001", "Close 2 = 30001", "UnRegister"}));
    EXPECT_EQ(CountOf(NewLog(), Info("Close port failed.")), 2);
    EXPECT_TRUE(Ports().empty());
}

TEST_F(ManagerRelease, IgnoresTheResultOfTheUnRegistration) {
    InitWith(FakeDevices());
    m_Fake->SetResult(FakeCall::kUnRegister, OS_ADAPT_FAILED);
    EXPECT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(CountOf(NewLog(), kLeave), 1);
}

TEST_F(ManagerRelease, TwiceFailsTheSecondTimeWithOneLine) {
    InitWith(FakeDevices());
    ASSERT_EQ(m_Manager.Release(), 20000);
    NewLog();
    m_Fake->ClearJournal();
    EXPECT_EQ(m_Manager.Release(), 20003);
    EXPECT_EQ(NewLog(), kEnter);
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(ManagerRelease, NoCallbackIsCalledAfterwards) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_TRUE(WaitUntil([this] { return m_Fake->Calls(FakeCall::kRead) > 0; }));
    ASSERT_EQ(m_Manager.Release(), 20000);
    const long reads = m_Fake->Calls(FakeCall::kRead);
    m_Fake->PushData("COM1", "late");
    EXPECT_FALSE(WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) != reads; },
                           std::chrono::milliseconds(50)));
    EXPECT_EQ(m_Recorder.Count(), 0u);
}

TEST_F(ManagerRelease, EmptiesTheStateCallbacksUnderALockOfItsOwn) {
    InitWith(FakeDevices());
    ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    JMutexGuard lock(ManagerProbe::DevStateCallbackMutex(m_Manager));
    std::atomic<bool> isReleased{false};
    std::thread releaser([&] {
        m_Manager.Release();
        isReleased = true;
    });
    EXPECT_TRUE(WaitUntil([&] { return isReleased.load(); }));
    releaser.join();
}

// SPDX-License-Identifier: MIT
//
// What Release does about a read thread that does not leave its loop.
#include <atomic>
#include <chrono>
#include <thread>

#include "tests/harness/process_counts.h"
#include "tests/unit/manager/manager_test.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class StuckReadThread : public ManagerTest {
  protected:
    ~StuckReadThread() override { m_Fake->Unblock(); }

    void GetStuck(FakeBlock how) {
        InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
        m_Fake->Block(FakeCall::kRead, how);
        ASSERT_EQ(m_Manager.Open(1), 20000);
        NewLog();
        m_Fake->ClearJournal();
        ASSERT_TRUE(WaitUntil([this] { return m_Fake->Blocked() == 1; }));
    }

    // How long Release takes; it must succeed.
    milliseconds TimeRelease() {
        const auto start = Clock::now();
        EXPECT_EQ(m_Manager.Release(), 20000);
        return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
    }
};

} // namespace

TEST_F(StuckReadThread, BlockedInTheAdapterIsKilledFourToSixSecondsLater) {
    GetStuck(FakeBlock::kInRead);
    const milliseconds elapsed = TimeRelease();
    EXPECT_GE(elapsed, milliseconds(4000));
    EXPECT_LE(elapsed, milliseconds(8000));
    EXPECT_EQ(m_Fake->Blocked(), 0) << "its stack has been unwound";
    EXPECT_FALSE(ManagerProbe::ReadThreadObject(m_Manager).IsRunning());
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Close 1", "UnRegister"})) << "the lock was taken over";
    EXPECT_EQ(NewLog(), Info("ENTER CKOVASMgrPort::Release()") +
                            Info("Begin m_ReadThread.EndThread()") +
                            Info("End m_ReadThread.EndThread()") + Info("Close port:1 succeeded.") +
                            Info("LEAVE CKOVASMgrPort::Release()"));
}

TEST_F(StuckReadThread, ThatComesFreeInTimeIsNotKilled) {
    GetStuck(FakeBlock::kInRead);
    std::thread unblocker([this] {
        const auto start = Clock::now();
        WaitUntil([&] { return Clock::now() - start > milliseconds(500); });
        m_Fake->Unblock();
    });
    EXPECT_LE(TimeRelease(), milliseconds(3500));
    unblocker.join();
    EXPECT_EQ(CountOf(NewLog(), Info("ReadThread() Exit \n")), 1);
}

TEST_F(StuckReadThread, ThatWasKilledLeavesAManagerThatInitialisesAgain) {
    GetStuck(FakeBlock::kInRead);
    ASSERT_EQ(m_Manager.Release(), 20000);
    m_Fake->Unblock();
    JLibrary* const first = ManagerProbe::OSAdaptLib(m_Manager);
    ASSERT_EQ(m_Manager.Init(), 20000);
    Free(first);
    m_Fake->PushData("COM1", "again");
    ASSERT_EQ(m_Manager.RegisterReadCallBack(3, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(3), 20000);
    EXPECT_TRUE(WaitUntil([this] { return m_Recorder.Count() == 1; }));
}

TEST_F(StuckReadThread, ThatCannotBeKilledIsLeftAloneWithOneErrorLine) {
    GetStuck(FakeBlock::kInSpin);
    const milliseconds elapsed = TimeRelease();
    EXPECT_GE(elapsed, milliseconds(5000));
    EXPECT_LE(elapsed, milliseconds(10000));
    EXPECT_EQ(m_Fake->Blocked(), 1) << "it lives on";
    EXPECT_TRUE(m_Fake->Journal().empty()) << "the adapter is not called any more";
    const std::string log = NewLog();
    EXPECT_EQ(CountOf(log, "] ERRO:"), 1);
    EXPECT_EQ(CountOf(log, "LEAVE CKOVASMgrPort::Release()"), 0);
}

TEST_F(StuckReadThread, ThatCannotBeKilledKeepsItsManagerAndTheNextOneIsAnother) {
    GetStuck(FakeBlock::kInSpin);
    CKOVASMgrPort::ReleaseInstance();
    CKOVASMgrPort* const next = CKOVASMgrPort::GetInstance();
    EXPECT_NE(next, &m_Manager);
    ASSERT_EQ(next->Init(), 20000);

    const size_t threads = RunningThreads();
    m_Fake->Unblock();
    EXPECT_TRUE(WaitUntil([&] { return RunningThreads() < threads; })) << "it ends unharmed";

    m_Fake->PushData("COM2", "hello");
    ASSERT_EQ(next->RegisterReadCallBack(2, OnRead<1>), 20000);
    ASSERT_EQ(next->Open(2), 20000);
    EXPECT_TRUE(WaitUntil([this] { return m_Recorder.Count() == 1; }));
}

TEST_F(StuckReadThread, ThatCannotBeKilledShutsNotificationsOut) {
    GetStuck(FakeBlock::kInSpin);
    ASSERT_EQ(m_Manager.Release(), 20000);
    EXPECT_EQ(CKOVASMgrPort::ProcessDeviceState(OS_ADAPT_DEVICE_INSERT), -1);
    EXPECT_TRUE(m_Fake->Journal().empty());
}

TEST_F(StuckReadThread, ThatCannotBeKilledMakesAWaitingNotificationEndWithoutAdapterOrCallbacks) {
    GetStuck(FakeBlock::kInSpin);
    ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(OnState<1>), 20000);
    std::thread notifier([this] { m_Fake->Notify(0); });
    ASSERT_TRUE(WaitUntil(
        [this] { return CountOf(LogText(m_Scratch), Info("Enter DetermineAddPort()")) == 2; }));
    ASSERT_EQ(m_Manager.Release(), 20000);
    m_Fake->Unblock();
    notifier.join();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kEnum), 1) << "the adapter is another manager's by then";
    EXPECT_EQ(CountOf(LogText(m_Scratch), Info("Leave DetermineAddPort()")), 1);
    EXPECT_EQ(m_Recorder.Count(), 0u);
}

TEST_F(StuckReadThread, ThatWaitsForALockOfTheAdapterCannotBeKilledAndKeepsItLoaded) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    std::atomic<bool> isHeld{false};
    std::atomic<bool> mayLetGo{false};
    std::thread holder([&] {
        m_Fake->Block(FakeCall::kRead, FakeBlock::kInMutex);
        isHeld = true;
        WaitUntil([&] { return mayLetGo.load(); }, std::chrono::seconds(30));
        m_Fake->Unblock();
    });
    ASSERT_TRUE(WaitUntil([&] { return isHeld.load(); }));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_TRUE(WaitUntil([this] { return m_Fake->Blocked() == 1; }));

    CKOVASMgrPort::ReleaseInstance();

    EXPECT_EQ(m_Fake->Blocked(), 1);
    EXPECT_NE(ManagerProbe::OSAdaptLib(m_Manager)->resolve("OS_ADAPT_Read"), nullptr);
    const size_t threads = RunningThreads();
    mayLetGo = true;
    holder.join();
    EXPECT_TRUE(WaitUntil([&] { return RunningThreads() + 1 < threads; }));
}

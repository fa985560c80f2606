// SPDX-License-Identifier: MIT
#include <atomic>
#include <filesystem>
#include <thread>

#include "tests/harness/process_counts.h"
#include "tests/unit/manager/manager_test.h"

namespace {

std::string ScanOfNothing() {
    return Info("Enter DetermineAddPort()") + Info("DetermineAddPort() Enum Device Count=0 !") +
           Info("Leave DetermineAddPort()");
}

class ManagerInit : public ManagerTest {
  protected:
    bool IsThreadRunning() { return ManagerProbe::ReadThreadObject(m_Manager).IsRunning(); }
};

} // namespace

TEST_F(ManagerInit, AManagerStartsEmptyAndUninitialised) {
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 0);
    EXPECT_EQ(ManagerProbe::ReadThreadRun(m_Manager), 0);
    EXPECT_EQ(ManagerProbe::LastPortID(m_Manager), 0);
    EXPECT_EQ(ManagerProbe::OSAdaptLib(m_Manager), nullptr);
    EXPECT_TRUE(ManagerProbe::DevStateCallbacks(m_Manager).empty());
    EXPECT_TRUE(Ports().empty());
    EXPECT_TRUE(Tree().empty());
    EXPECT_FALSE(IsThreadRunning());
    EXPECT_EQ(NewLog(), "");
}

TEST_F(ManagerInit, ScansStartsTheReadThreadAndRegisters) {
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Register"}));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(TreeLines(), (Lines{"Modem: COM1"}));
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 1);
    EXPECT_EQ(ManagerProbe::ReadThreadRun(m_Manager), 1);
    EXPECT_TRUE(IsThreadRunning());
    EXPECT_NE(ManagerProbe::OSAdaptLib(m_Manager), nullptr);
}

TEST_F(ManagerInit, LogsTheFirstScanOnly) {
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(NewLog(), ScanOfNothing());
}

TEST_F(ManagerInit, ScansWhenMarkedInitialisedAndBeforeTheReadThreadStarts) {
    m_Fake->SetHook(FakeCall::kEnum, [this] {
        EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 1);
        EXPECT_EQ(ManagerProbe::ReadThreadRun(m_Manager), 0);
        EXPECT_FALSE(IsThreadRunning());
    });
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(m_Fake->Calls(FakeCall::kEnum), 1);
}

TEST_F(ManagerInit, RegistersWhenTheReadThreadRuns) {
    m_Fake->SetHook(FakeCall::kRegister, [this] { EXPECT_TRUE(IsThreadRunning()); });
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRegister), 1);
}

TEST_F(ManagerInit, HoldsThePortLockToItsEnd) {
    std::atomic<bool> isAnswered{false};
    std::thread asker;
    m_Fake->SetHook(FakeCall::kRegister, [&] {
        asker = std::thread([&] {
            m_Manager.GetPortState(1);
            isAnswered = true;
        });
        EXPECT_FALSE(WaitUntil([&] { return isAnswered.load(); }, std::chrono::milliseconds(100)));
    });
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_TRUE(WaitUntil([&] { return isAnswered.load(); }));
    asker.join();
}

TEST_F(ManagerInit, AFailedScanIsNoFailure) {
    m_Fake->SetResult(FakeCall::kEnum, OS_ADAPT_FAILED);
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(NewLog(), Info("Enter DetermineAddPort()") + Info("Leave DetermineAddPort()"));
    EXPECT_TRUE(Ports().empty());
}

TEST_F(ManagerInit, TwiceSucceedsAndLoadsTheAdapterAgainWithoutFreeingTheFirstObject) {
    ASSERT_EQ(m_Manager.Init(), 20000);
    JLibrary* const first = ManagerProbe::OSAdaptLib(m_Manager);
    NewLog();
    m_Fake->ClearJournal();

    EXPECT_EQ(m_Manager.Init(), 20000);

    EXPECT_NE(ManagerProbe::OSAdaptLib(m_Manager), first);
    EXPECT_NE(first->resolve("OS_ADAPT_Read"), nullptr) << "the first is loaded still";
    EXPECT_TRUE(m_Fake->Journal().empty()) << "no scan, no registration";
    EXPECT_EQ(NewLog(), "");
    EXPECT_TRUE(IsThreadRunning());
    Free(first); // nobody else will
}

TEST_F(ManagerInit, TwiceKeepsPortsOpenAndTheirCallbacks) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    JLibrary* const first = ManagerProbe::OSAdaptLib(m_Manager);
    ASSERT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(Ports().at(0).hPort, 1);
    EXPECT_EQ(Ports().at(0).vecReadCallbacks.size(), 1u);
    Free(first);
}

TEST_F(ManagerInit, ASecondTimeWithTheAdapterGoneFailsAndStaysInitialised) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    JLibrary* const first = ManagerProbe::OSAdaptLib(m_Manager);
    std::filesystem::remove("libOSAdapt.so");
    EXPECT_EQ(m_Manager.Init(), 20002);
    EXPECT_EQ(NewLog(), Info("Load OSAdapte.dll fail"));
    EXPECT_EQ(ManagerProbe::IsInit(m_Manager), 1);
    EXPECT_EQ(m_Manager.Open(1), 20002);
    Free(first);
}

TEST_F(ManagerInit, AfterReleaseWorksAgain) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    JLibrary* const first = ManagerProbe::OSAdaptLib(m_Manager);
    ASSERT_EQ(m_Manager.Release(), 20000);
    m_Fake->ClearJournal();
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Register"}));
    EXPECT_TRUE(IsThreadRunning());
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 2"})) << "one manager never gives a number twice";
    ASSERT_TRUE(m_Fake->NotifyOnThread(5));
    Free(first);
}

TEST_F(ManagerInit, StartsNoSecondReadThreadBesideOneThatRuns) {
    auto& thread =
        static_cast<JThreadT<CKOVASMgrPort, void>&>(ManagerProbe::ReadThreadObject(m_Manager));
    thread.SetTask(&m_Manager, &CKOVASMgrPort::ReadThread);
    ManagerProbe::ReadThreadRun(m_Manager) = 1;
    ASSERT_EQ(thread.Start(), 0);
    const std::size_t threads = RunningThreads();
    EXPECT_EQ(m_Manager.Init(), 20000);
    EXPECT_EQ(RunningThreads(), threads);
    EXPECT_EQ(m_Fake->Journal(), (Lines{"Enum 4", "Register"}));
}

// SPDX-License-Identifier: MIT
#include <atomic>
#include <climits>
#include <thread>

#include "tests/harness/capture_stdout.h"
#include "tests/unit/manager/manager_test.h"

namespace {

const std::string kInsert = "----OS_ADAPT_DEVICE_INSERT-------\n";
const std::string kPullOut = "----OS_ADAPT_DEVICE_PULLOUT-------\n";

class Notification : public ManagerTest {
  protected:
    void Register(KOVAMGR_DEV_STATE_CALLBACK cb) {
        ASSERT_EQ(m_Manager.RegisterDeviceStateProcessCallback(cb), 20000);
    }

    // What the process prints meanwhile.
    std::string Notify(int status) {
        CaptureStdout output;
        EXPECT_TRUE(m_Fake->NotifyOnThread(status));
        return output.Text();
    }
};

} // namespace

TEST_F(Notification, OfAnInsertionPrintsRescansAndTells) {
    InitWith(FakeDevices());
    Register(OnState<1>);
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    EXPECT_EQ(Notify(0), kInsert);
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200"}));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(NewLog(), Info("Enter DetermineAddPort()") +
                            Info("DetermineAddPort() Enum Device Count=1 !") +
                            Info("DetermineAddPort() Port of Device Count=1 !") + Info("COM1") +
                            Info("Leave DetermineAddPort()"));
}

TEST_F(Notification, OfAPullOutPrintsRescansAndTells) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    Register(OnState<1>);
    FakeDevices().Apply(*m_Fake);
    EXPECT_EQ(Notify(1), kPullOut + "Delete COM1 port in m_stDeviceTree.\n");
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20201"}));
    EXPECT_TRUE(Ports().empty());
    EXPECT_EQ(NewLog(), Info("Enter DetermineSubtractPort()") +
                            Info("DetermineSubtractPort() Enum Device Count=0 !") +
                            Info("Leave DetermineSubtractPort()"));
}

TEST_F(Notification, OfAnUnknownStatusTellsWithoutARescan) {
    InitWith(FakeDevices());
    Register(OnState<1>);
    Register(OnState<2>);
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    EXPECT_EQ(Notify(5), "");
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20205", "state 2: 20205"}));
    EXPECT_TRUE(Ports().empty());
    EXPECT_TRUE(m_Fake->Journal().empty());
    EXPECT_EQ(NewLog(), "");
}

TEST_F(Notification, OfAnyStatusAdds20200) {
    InitWith(FakeDevices());
    Register(OnState<1>);
    for (const int status : {-1, 2, 1000, INT_MIN, INT_MAX - 20200}) {
        Notify(status);
        EXPECT_EQ(m_Recorder.Told().back(), "state 1: " + std::to_string(status + 20200));
    }
}

TEST_F(Notification, IsAnsweredWithZeroWhateverTheStatus) {
    InitWith(FakeDevices());
    for (const int status : {0, 1, 5}) {
        EXPECT_EQ(
            CKOVASMgrPort::ProcessDeviceState(static_cast<_OS_ADAPT_DEVICESTATUS_TYPE>(status)), 0);
    }
}

TEST_F(Notification, TellsAlsoWhenTheEnumerationFails) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    Register(OnState<1>);
    m_Fake->SetResult(FakeCall::kEnum, OS_ADAPT_FAILED);
    EXPECT_EQ(Notify(0), kInsert);
    EXPECT_EQ(Notify(1), kPullOut);
    EXPECT_EQ(m_Recorder.Told(), (Lines{"state 1: 20200", "state 1: 20201"}));
    EXPECT_EQ(PortLines(), (Lines{"COM1 = 1"}));
    EXPECT_EQ(NewLog(), Info("Enter DetermineAddPort()") + Info("Leave DetermineAddPort()") +
                            Info("Enter DetermineSubtractPort()") +
                            Info("Enumerate information of ports failed."));
}

TEST_F(Notification, IsToldOnTheAdaptersThreadWithTheListsUpToDate) {
    InitWith(FakeDevices());
    Register(OnState<1>);
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    Lines seen;
    m_Recorder.During("state 1", [&] { seen = PortLines(); });
    std::thread::id notifier;
    std::thread([&] {
        notifier = std::this_thread::get_id();
        m_Fake->Notify(0);
    }).join();
    EXPECT_EQ(seen, (Lines{"COM1 = 1"}));
    EXPECT_EQ(m_Recorder.LastThread(), notifier);
}

TEST_F(Notification, IsToldWithoutThePortLock) {
    InitWith(FakeDevices());
    Register(OnState<1>);
    std::atomic<bool> isAnswered{false};
    m_Recorder.During("state 1", [&] {
        std::thread([&] { isAnswered = m_Manager.GetPortState(1) == 20050; }).join();
    });
    Notify(0);
    EXPECT_TRUE(isAnswered);
}

TEST_F(Notification, IsToldUnderTheDeviceStateLock) {
    InitWith(FakeDevices());
    Register(OnState<1>);
    std::atomic<bool> isRegistered{false};
    std::thread registrar;
    m_Recorder.During("state 1", [&] {
        registrar = std::thread([&] {
            m_Manager.RegisterDeviceStateProcessCallback(OnState<2>);
            isRegistered = true;
        });
        EXPECT_FALSE(
            WaitUntil([&] { return isRegistered.load(); }, std::chrono::milliseconds(100)));
    });
    Notify(5);
    EXPECT_TRUE(WaitUntil([&] { return isRegistered.load(); }));
    registrar.join();
}

TEST_F(Notification, OfAPullOutClosesOpenPortsOfTheVanishedDevice) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Device("Reader").Port("COM2"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_EQ(m_Manager.Open(2), 20000);
    FakeDevices().Device("Reader").Port("COM2").Apply(*m_Fake);
    Notify(1);
    EXPECT_EQ(PortLines(), (Lines{"COM2 = 2"}));
    EXPECT_EQ(m_Fake->OpenHandles(), 1u);
    long result = 0;
    EXPECT_EQ(m_Manager.Write(2, "abc", 3, 0, KOVAMGR_COMMAND_PRIORITY_NORMAL, &result), 3);
}

// SPDX-License-Identifier: MIT
#include <atomic>
#include <thread>

#include "tests/unit/manager/manager_test.h"

namespace {

class ReadThread : public ManagerTest {
  protected:
    bool WaitForTold(size_t count) {
        return WaitUntil([&] { return m_Recorder.Count() >= count; });
    }
    bool WaitForReads(long count) {
        const long before = m_Fake->Calls(FakeCall::kRead);
        return WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) >= before + count; });
    }
};

} // namespace

TEST_F(ReadThread, DeliversOnAThreadOfItsOwn) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    m_Fake->PushData("COM1", "hello");
    ASSERT_TRUE(WaitForTold(1));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: hello"}));
    EXPECT_NE(m_Recorder.LastThread(), std::this_thread::get_id());
    EXPECT_EQ(m_Recorder.LastThread(), m_Fake->LastThread(FakeCall::kRead));
}

TEST_F(ReadThread, DeliversInTheOrderOfArrival) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    Lines expected;
    for (int i = 0; i < 20; ++i) {
        m_Fake->PushData("COM1", std::to_string(i));
        expected.push_back("read 1: " + std::to_string(i));
    }
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_TRUE(WaitForTold(20));
    EXPECT_EQ(m_Recorder.Told(), expected);
}

TEST_F(ReadThread, SweepsAboutEveryTenMilliseconds) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(WaitForReads(51));
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(elapsed, std::chrono::milliseconds(490));
    EXPECT_LT(elapsed, std::chrono::seconds(4)) << "ten times as long would be 5 s";
}

TEST_F(ReadThread, CallbacksHoldThePortLock) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    std::atomic<bool> isOpened{false};
    std::thread opener;
    m_Recorder.During("read 1", [&] {
        opener = std::thread([&] {
            m_Manager.Open(2);
            isOpened = true;
        });
        EXPECT_FALSE(WaitUntil([&] { return isOpened.load(); }, std::chrono::milliseconds(100)));
    });
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    m_Fake->PushData("COM1", "a");
    EXPECT_TRUE(WaitUntil([&] { return isOpened.load(); }));
    opener.join();
}

// Whoever sleeps with the lock takes it again at once and lets hardly anybody in between: with the
// lock free, many calls fit between two sweeps.
TEST_F(ReadThread, TheLockIsFreeBetweenTwoSweeps) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    ASSERT_TRUE(WaitForReads(2));
    const long before = m_Fake->Calls(FakeCall::kRead);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(m_Manager.GetPortState(1), 20050);
    }
    EXPECT_LT(m_Fake->Calls(FakeCall::kRead) - before, 500) << "a call waits for a sweep each";
}

TEST_F(ReadThread, AClosedPortIsNotReadWhileAnotherIs) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    m_Fake->PushData("COM1", "a");
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(2), 20000);
    ASSERT_TRUE(WaitForReads(5));
    EXPECT_EQ(m_Fake->PendingReads("COM1"), 1u);
    EXPECT_EQ(m_Recorder.Count(), 0u);
}

TEST_F(ReadThread, GoesOnWhateverFails) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.RegisterReadCallBack(1, OnRead<1>), 20000);
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    for (int i = 0; i < 5; ++i) {
        m_Fake->PushRead("COM1", {"", {}, true, OS_ADAPT_FAILED});
    }
    m_Fake->PushData("COM1", "at last");
    ASSERT_TRUE(WaitForTold(1));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: at last"}));
    std::string expected;
    for (int i = 0; i < 5; ++i) {
        expected += Info("Read failed.\n");
    }
    EXPECT_EQ(NewLog(), expected);
}

TEST_F(ReadThread, WithItsRunFlagClearedLeavesAtOnceWithALine) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    ManagerProbe::ReadThreadRun(m_Manager) = 0;
    m_Manager.ReadThread();
    EXPECT_EQ(NewLog(), Info("ReadThread() Exit \n"));
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 0);
}

TEST_F(ReadThread, ItsEndIsOneLine) {
    LoadWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(m_Manager.Open(1), 20000);
    NewLog();
    m_Fake->SetHook(FakeCall::kRead, [this] {
        if (m_Fake->Calls(FakeCall::kRead) == 3) {
            ManagerProbe::ReadThreadRun(m_Manager) = 0;
        }
    });
    m_Manager.ReadThread();
    EXPECT_EQ(m_Fake->Calls(FakeCall::kRead), 3);
    EXPECT_EQ(NewLog(), Info("ReadThread() Exit \n"));
}

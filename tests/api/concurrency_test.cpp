// SPDX-License-Identifier: MIT
//
// Hosts' threads, the read thread and notices, all at work; for the race detector most of all.
#include <atomic>
#include <thread>

#include "tests/api/host_test.h"
#include "tests/harness/capture_stdout.h"

namespace {

class Concurrency : public HostTest {
  protected:
    // Runs this again and again until the others have had enough turns.
    void Spawn(std::function<void()> turn) {
        m_Threads.emplace_back([this, turn = std::move(turn)] {
            while (!m_bEnough) {
                turn();
                ++m_nTurns;
            }
        });
    }
    void LetThemRun(long reads) {
        const long before = m_Fake->Calls(FakeCall::kRead);
        EXPECT_TRUE(WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) >= before + reads; },
                              std::chrono::seconds(40)));
        m_bEnough = true;
        for (std::thread& thread : m_Threads) {
            thread.join();
        }
        EXPECT_GT(m_nTurns, 0);
    }

    std::vector<std::thread> m_Threads;
    std::atomic<bool> m_bEnough{false};
    std::atomic<long> m_nTurns{0};
};

} // namespace

TEST_F(Concurrency, EveryFunctionFromManyThreadsWithDataAndNoticesUnderWay) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Reader").Port("COM3"));
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    CaptureStdout output;
    Spawn([this] { m_Fake->PushData("COM1", "data"); });
    Spawn([] {
        KOVAMGR_Open(2);
        KOVAMGR_Write(2, "abc", 3, 0, nullptr);
        KOVAMGR_Close(2);
    });
    Spawn([] {
        KOVAMGR_RegisterCommDataReadCallback(OnRead<2>, 1);
        KOVAMGR_UnRegisterCommDataReadCallback(OnRead<2>, 1);
    });
    Spawn([] {
        KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>);
        KOVAMGR_UnRegisterDeviceStateProcessCallback(OnState<1>);
    });
    Spawn([] {
        KOVAMGR_GetPortState(1);
        Devices();
    });
    Spawn([this] {
        FakeDevices().Device("Modem").Port("COM1").Port("COM2").Apply(*m_Fake);
        m_Fake->Notify(1);
        FakeDevices().Device("Modem").Port("COM1").Port("COM2").Device("Reader").Port("COM3").Apply(
            *m_Fake);
        m_Fake->Notify(0);
    });
    LetThemRun(50);
    EXPECT_EQ(KOVAMGR_Write(1, "abc", 3, 0, nullptr), 3) << "the port that stayed is open still";
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_EQ(m_Fake->OpenHandles(), 0u);
}

TEST_F(Concurrency, NoticesAtAnyTimeOfManyLives) {
    CaptureStdout output;
    m_Fake->KeepNotifyingAfterUnRegister(true);
    FakeDevices().Device("Modem").Port("COM1").Apply(*m_Fake);
    Spawn([this] {
        m_Fake->Notify(0);
        m_Fake->Notify(5);
    });
    Spawn([this] { m_Fake->Notify(1); });
    for (int life = 0; life < 10; ++life) {
        ASSERT_EQ(Init(), 20000);
        ASSERT_EQ(KOVAMGR_RegisterDeviceStateProcessCallback(OnState<1>), 20000);
        EXPECT_EQ(Devices(), (Lines{"Modem: COM1 = 1"}));
        ASSERT_EQ(KOVAMGR_Release(), 20000);
        const size_t told = m_Recorder.Count();
        m_Fake->Notify(5);
        EXPECT_EQ(m_Recorder.Count(), told) << "no callback after Release";
    }
    LetThemRun(0);
}

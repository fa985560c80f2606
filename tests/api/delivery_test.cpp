// SPDX-License-Identifier: MIT
#include <atomic>
#include <thread>

#include "tests/api/host_test.h"

namespace {

class Delivery : public HostTest {
  protected:
    // Lets so many further reads of the adapter pass.
    void PassReads(long count) {
        const long before = m_Fake->Calls(FakeCall::kRead);
        ASSERT_TRUE(WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) >= before + count; }));
    }
};

} // namespace

TEST_F(Delivery, GoesToTheCallbacksOfThePortWithTheCallbackNamedFirst) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<2>, 2), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_EQ(KOVAMGR_Open(2), 20000);
    m_Fake->PushData("COM2", "hello");
    ASSERT_TRUE(WaitForTold(1));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 2: hello"}));
    EXPECT_NE(m_Recorder.LastThread(), std::this_thread::get_id());
}

TEST_F(Delivery, GoesOnceToACallbackThatIsRegisteredTwice) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    EXPECT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    m_Fake->PushData("COM1", "a");
    m_Fake->PushData("COM1", "b");
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitForTold(2));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: a", "read 1: b"}));
}

TEST_F(Delivery, EndsWhenUnRegistrationHasReturned) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    std::atomic<bool> isInside{false};
    m_Recorder.During("read 1", [&] {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(50));
        isInside = false;
    });
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    for (int i = 0; i < 100; ++i) {
        m_Fake->PushData("COM1", "a");
    }
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    EXPECT_EQ(KOVAMGR_UnRegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    EXPECT_FALSE(isInside);
    const size_t told = m_Recorder.Count();
    PassReads(3);
    EXPECT_EQ(m_Recorder.Count(), told);
}

TEST_F(Delivery, EndsWhenCloseHasReturned) {
    InitWith(FakeDevices().Device("Modem").Port("COM1").Port("COM2"));
    std::atomic<bool> isInside{false};
    m_Recorder.During("read 1", [&] {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(50));
        isInside = false;
    });
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    for (int i = 0; i < 100; ++i) {
        m_Fake->PushData("COM1", "a");
    }
    ASSERT_EQ(KOVAMGR_Open(2), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    EXPECT_EQ(KOVAMGR_Close(1), 20000);
    EXPECT_FALSE(isInside);
    const size_t told = m_Recorder.Count();
    PassReads(3);
    EXPECT_EQ(m_Recorder.Count(), told);
}

TEST_F(Delivery, EndsWhenReleaseHasReturned) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    std::atomic<bool> isInside{false};
    m_Recorder.During("read 1", [&] {
        isInside = true;
        WaitUntil([] { return false; }, std::chrono::milliseconds(50));
        isInside = false;
    });
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    for (int i = 0; i < 100; ++i) {
        m_Fake->PushData("COM1", "a");
    }
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    EXPECT_EQ(KOVAMGR_Release(), 20000);
    EXPECT_FALSE(isInside);
    const size_t told = m_Recorder.Count();
    EXPECT_FALSE(
        WaitUntil([&] { return m_Recorder.Count() != told; }, std::chrono::milliseconds(50)));
}

TEST_F(Delivery, SurvivesAClosingAndReopening) {
    InitWith(FakeDevices().Device("Modem").Port("COM1"));
    ASSERT_EQ(KOVAMGR_RegisterCommDataReadCallback(OnRead<1>, 1), 20000);
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_EQ(KOVAMGR_Close(1), 20000);
    m_Fake->PushData("COM1", "again");
    ASSERT_EQ(KOVAMGR_Open(1), 20000);
    ASSERT_TRUE(WaitForTold(1));
    EXPECT_EQ(m_Recorder.Told(), (Lines{"read 1: again"}));
}

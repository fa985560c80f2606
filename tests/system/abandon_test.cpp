// SPDX-License-Identifier: MIT
#include <atomic>
#include <thread>

#include "tests/system/attached_host.h"
#include "tests/system/stuck_callbacks.h"

namespace {

std::atomic<int> s_Told{0};

void CountTold(_KOVAMGR_DEV_STATE_TYPE_) { ++s_Told; }

class Abandon : public AttachedHost {
  protected:
    ~Abandon() override { LetGo(); }

    void StickIn(KOVAMGR_READ_CALLBACK callback) {
        InitAndOpen();
        ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterCommDataReadCallback(callback, 1));
        m_Fake->PushData("COM1", "data");
        ASSERT_TRUE(WaitUntilStuck());
    }

    void CheckRelease() {
        const auto seconds = SecondsOfRelease();
        ASSERT_TRUE(seconds.has_value()) << "the release hangs";
        EXPECT_GE(*seconds, 5.0);
        EXPECT_LE(*seconds, 8.0);
        EXPECT_EQ(1, LogLines("ERRO:"));
        EXPECT_EQ(2U, m_Fake->OpenHandles()) << "the ports of the living thread stay open";
    }

    // The thread ends by the cancellation that is pending for it, or by leaving its loop.
    void CheckThatTheThreadEndsQuietly() {
        LetGo();
        EXPECT_TRUE(WaitUntilThreadsAre(m_Threads));
    }

    // A notification that waits for the lock that the stuck read thread holds.
    std::thread StartStuckNotification() {
        const int before = LogLines("Enter DetermineAddPort()");
        std::thread thread([this] { m_Fake->Notify(OS_ADAPT_DEVICE_INSERT); });
        EXPECT_TRUE(WaitUntil([&] { return LogLines("Enter DetermineAddPort()") == before + 1; }));
        return thread;
    }
};

} // namespace

TEST_F(Abandon, ACallbackThatSpinsIsLeftAloneAndANewManagerWorks) {
    StickIn(Spin);
    CheckRelease();
    CheckThatANewManagerWorks();
    CheckThatTheThreadEndsQuietly();
    CheckThatANewManagerWorks();
}

TEST_F(Abandon, ACallbackThatWaitsForAMutexIsLeftAloneAndANewManagerWorks) {
    HoldMutex();
    StickIn(WaitForMutex);
    CheckRelease();
    CheckThatANewManagerWorks();
    CheckThatTheThreadEndsQuietly();
    CheckThatANewManagerWorks();
}

TEST_F(Abandon, AReadThatSpinsInTheAdapterIsLeftAloneAndANewManagerWorks) {
    ASSERT_EQ(KOVAMGR_OK, Init());
    m_Fake->Block(FakeCall::kRead, FakeBlock::kInSpin);
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Open(1));
    ASSERT_TRUE(WaitUntil([&] { return m_Fake->Blocked() == 1; }));
    const auto seconds = SecondsOfRelease();
    ASSERT_TRUE(seconds.has_value()) << "the release hangs";
    EXPECT_LE(*seconds, 8.0);
    EXPECT_EQ(1, LogLines("ERRO:"));
    m_Fake->Unblock();
    EXPECT_TRUE(WaitUntilThreadsAre(m_Threads)); // else it takes what the next one shall read
    CheckThatANewManagerWorks();
}

TEST_F(Abandon, ANotificationStuckInsideDoesNotHoldUpTheNextManagersRelease) {
    StickIn(Spin);
    std::thread notification = StartStuckNotification();
    CheckRelease();
    CheckThatANewManagerWorks();
    LetGo();
    notification.join();
    CheckThatTheThreadEndsQuietly();
    CheckThatANewManagerWorks();
}

TEST_F(Abandon, ANotificationStuckInsideTellsNobodyOnceTheReleaseHasReturned) {
    StickIn(Spin);
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(CountTold));
    std::thread notification = StartStuckNotification();
    CheckRelease();
    ASSERT_EQ(0, s_Told);
    LetGo();
    notification.join();
    EXPECT_EQ(0, s_Told);
    CheckThatTheThreadEndsQuietly();
}

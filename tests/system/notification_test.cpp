// SPDX-License-Identifier: MIT
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "tests/system/attached_host.h"

namespace {

std::atomic<bool> s_IsReleased{false};
std::atomic<int> s_Calls{0};
std::atomic<int> s_LateCalls{0};

void CountCall(_KOVAMGR_DEV_STATE_TYPE_) {
    ++s_Calls;
    KOVAMGR_GetPortState(0); // also while a release begins
    if (s_IsReleased) {
        ++s_LateCalls;
    }
}

// A callback that stays inside until it is let out.
std::mutex s_Mutex;
std::condition_variable s_Changed;
bool s_IsInside = false;
bool s_MayLeave = false;

void Stay(_KOVAMGR_DEV_STATE_TYPE_ state) {
    std::unique_lock<std::mutex> lock(s_Mutex);
    s_IsInside = true;
    s_Changed.notify_all();
    s_Changed.wait(lock, [] { return s_MayLeave; });
    CountCall(state);
}

// A callback inside which another notification arrives, as soon as it is let out.
FakeAdapterControl* s_Adapter = nullptr;

void StayAndNotify(_KOVAMGR_DEV_STATE_TYPE_ state) {
    Stay(state);
    s_Adapter->Notify(OS_ADAPT_DEVICE_PULLOUT);
}

bool WaitUntilInside() {
    std::unique_lock<std::mutex> lock(s_Mutex);
    return s_Changed.wait_for(lock, std::chrono::seconds(10), [] { return s_IsInside; });
}

void LetOut() {
    std::lock_guard<std::mutex> lock(s_Mutex);
    s_MayLeave = true;
    s_Changed.notify_all();
}

class NotificationAtAnyTime : public AttachedHost {};

} // namespace

TEST_F(NotificationAtAnyTime, BeforeTheNextInitAndAfterTheReleaseItReachesNobody) {
    m_Fake->KeepNotifyingAfterUnRegister(true);
    ASSERT_EQ(KOVAMGR_OK, Init());
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(CountCall));
    EXPECT_TRUE(m_Fake->Notify(OS_ADAPT_DEVICE_INSERT));
    EXPECT_EQ(1, s_Calls);
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    const long scans = m_Fake->Calls(FakeCall::kEnum);
    for (const int status : {0, 1, 5}) {
        EXPECT_TRUE(m_Fake->NotifyOnThread(status));
    }
    EXPECT_EQ(1, s_Calls);
    EXPECT_EQ(scans, m_Fake->Calls(FakeCall::kEnum)) << "the adapter was called after the release";
    ASSERT_EQ(KOVAMGR_OK, Init());
    EXPECT_TRUE(m_Fake->Notify(OS_ADAPT_DEVICE_PULLOUT));
    EXPECT_EQ(1, s_Calls) << "callbacks of the released manager were told";
}

TEST_F(NotificationAtAnyTime, OneThatArrivesInsideTheUnRegistrationIsServed) {
    m_Fake->SetHook(FakeCall::kUnRegister, [this] { m_Fake->Notify(OS_ADAPT_DEVICE_INSERT); });
    m_Fake->KeepNotifyingAfterUnRegister(true);
    ASSERT_EQ(KOVAMGR_OK, Init());
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(CountCall));
    const auto seconds = SecondsOfRelease();
    ASSERT_TRUE(seconds.has_value()) << "the release hangs";
    EXPECT_EQ(1, s_Calls);
    EXPECT_EQ(0U, m_Fake->OpenHandles());
}

TEST_F(NotificationAtAnyTime,
       AStreamOfThemDuringTwentyCyclesOfInitAndReleaseReachesNoReleasedHost) {
    m_Fake->KeepNotifyingAfterUnRegister(true);
    std::atomic<bool> isDone{false};
    std::atomic<int> sent{0};
    std::thread notifier([&] {
        for (int i = 0; !isDone; ++i) {
            sent += m_Fake->Notify(i % 3) ? 1 : 0;
        }
    });
    for (int cycle = 0; cycle < 20; ++cycle) {
        s_IsReleased = false;
        EXPECT_EQ(KOVAMGR_OK, Init());
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(CountCall));
        const int before = s_Calls;
        EXPECT_TRUE(WaitUntil([&] { return s_Calls > before; }));
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
        s_IsReleased = true;
        const int sentBefore = sent;
        EXPECT_TRUE(WaitUntil([&] { return sent > sentBefore + 2; }));
    }
    isDone = true;
    notifier.join();
    EXPECT_EQ(0, s_LateCalls);
}

TEST_F(NotificationAtAnyTime, ReleaseWaitsForADeviceStateCallbackThatIsStillRunning) {
    ASSERT_EQ(KOVAMGR_OK, Init());
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(Stay));
    std::thread notification([this] { m_Fake->Notify(OS_ADAPT_DEVICE_INSERT); });
    ASSERT_TRUE(WaitUntilInside());
    std::atomic<bool> hasReturned{false};
    std::thread release([&] {
        KOVAMGR_Release();
        hasReturned = true;
        s_IsReleased = true;
    });
    // The adapter does not wait for it; the library has to.
    EXPECT_TRUE(WaitUntil([&] { return JournalLines("UnRegister") == 1; }));
    EXPECT_FALSE(WaitUntil([&] { return hasReturned.load(); }, std::chrono::milliseconds(300)));
    LetOut();
    release.join();
    notification.join();
    EXPECT_EQ(1, s_Calls);
    EXPECT_EQ(0, s_LateCalls);
}

TEST_F(NotificationAtAnyTime, OneInsideAnotherDoesNotHoldUpAReleaseThatWaitsForBoth) {
    s_Adapter = &*m_Fake;
    m_Fake->KeepNotifyingAfterUnRegister(true);
    ASSERT_EQ(KOVAMGR_OK, Init());
    ASSERT_EQ(KOVAMGR_OK, KOVAMGR_RegisterDeviceStateProcessCallback(StayAndNotify));
    std::thread notification([this] { m_Fake->Notify(OS_ADAPT_DEVICE_INSERT); });
    ASSERT_TRUE(WaitUntilInside());
    std::thread letOut([this] {
        WaitUntil([&] { return JournalLines("UnRegister") == 1; });
        LetOut();
    });
    const auto seconds = SecondsOfRelease();
    letOut.join();
    ASSERT_TRUE(seconds.has_value()) << "the release hangs";
    notification.join();
    EXPECT_LT(*seconds, 2.0);
}

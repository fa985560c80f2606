// SPDX-License-Identifier: MIT
//
// Calls that fail, fall short or last because a scenario says so.
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "tests/adapters/simulated_host.h"
#include "tests/harness/log_text.h"
#include "tests/harness/wait_until.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

class Fault : public SimulatedHost {
  protected:
    int Read(int handle) const {
        char buffer[64];
        long count = -1;
        return m_Adapter.Read(handle, buffer, sizeof buffer, &count);
    }

    int Enumerate() const {
        return m_Adapter.Enumerate(OS_ADAPT_ENUM_ALL,
                                   std::make_unique<_OS_ADAPT_DEVICEPORTLIST>().get());
    }
};

// How long a call takes.
template <typename Call> milliseconds TimeOf(Call call) {
    const auto start = Clock::now();
    call();
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

} // namespace

TEST_F(Fault, EachOperationFailsWithTheCodeOfAFailureAndWorksAfterwards) {
    Run("'at 0s fail open of p1', 'at 0s fail write to p1', 'at 0s fail read from p1', "
        "'at 0s fail close of p1'");
    EXPECT_EQ(OS_ADAPT_NO_HANDLE, m_Adapter.OpenPort("p1"));
    const int handle = Open("p1");
    long count = -1;
    EXPECT_EQ(OS_ADAPT_FAILED, m_Adapter.Write(handle, "x", 1, &count));
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(OS_ADAPT_FAILED, Read(handle));
    EXPECT_EQ(OS_ADAPT_OK, Read(handle));
    EXPECT_EQ(OS_ADAPT_FAILED, m_Adapter.Close(handle));
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "x")); // what failed was not done
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Close(handle));
    EXPECT_EQ("open 1 failed\nopen\nwrite 1 failed\nclose 1 failed\nclose\nread 1 failed\n",
              Track("p1"));
}

TEST_F(Fault, TheFirstEnumerationCanFail) {
    UseScenario(std::string("events = ['at 0s fail enumeration 2 times']") + kTwoPorts);
    EXPECT_EQ(OS_ADAPT_FAILED, Enumerate());
    EXPECT_EQ(OS_ADAPT_FAILED, Enumerate());
    EXPECT_EQ("modem(p1 p2)", m_Adapter.DevicesText());
    EXPECT_EQ("enumeration 1 failed\nenumeration 2 failed\n", Track("enumeration"));
}

TEST_F(Fault, TheReasonIsLoggedOnce) {
    Run("'at 0s fail read from p1 5 times'");
    const int handle = Open("p1");
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(OS_ADAPT_FAILED, Read(handle));
    }
    EXPECT_EQ(1, LogLines("port 'p1': read failed because the scenario says so"));
}

TEST_F(Fault, OnlyThePortThatIsNamedFails) {
    Run("'at 0s fail write to p1 always'");
    EXPECT_EQ(1, m_Adapter.WriteText(Open("p2"), "x"));
    EXPECT_EQ(-1, m_Adapter.WriteText(Open("p1"), "x"));
}

TEST_F(Fault, TheNthCallFailsAndEachCallIfNoneIsNamed) {
    Run("'on 3rd write to p1 fail', 'on write to p2 fail'");
    const int p1 = Open("p1");
    const int p2 = Open("p2");
    for (const long expected : {1, 1, -1, 1, 1}) {
        EXPECT_EQ(expected, m_Adapter.WriteText(p1, "x"));
        EXPECT_EQ(-1, m_Adapter.WriteText(p2, "x"));
    }
    EXPECT_EQ("open\nwrite 3 failed\n", Track("p1"));
}

TEST_F(Fault, ANumberOfCallsFailsFromTheOneThatTriggersOn) {
    Run("'on 2nd read from p1 fail read from p1 3 times'");
    const int handle = Open("p1");
    for (const int expected : {OS_ADAPT_OK, OS_ADAPT_FAILED, OS_ADAPT_FAILED, OS_ADAPT_FAILED,
                               OS_ADAPT_OK, OS_ADAPT_OK}) {
        EXPECT_EQ(expected, Read(handle));
    }
}

TEST_F(Fault, ACallOfOnePortLetsOneOfAnotherFail) {
    Run("'on open of p1 fail write to p2'");
    const int p2 = Open("p2");
    EXPECT_EQ(1, m_Adapter.WriteText(p2, "x"));
    Open("p1");
    EXPECT_EQ(-1, m_Adapter.WriteText(p2, "x"));
    EXPECT_EQ(1, m_Adapter.WriteText(p2, "x"));
}

TEST_F(Fault, CallsFailForATimeByTheScenariosClock) {
    Run("'at 0s fail write to p1 for 10s'", kTwoPorts, "speed = 50");
    const int handle = Open("p1");
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    EXPECT_TRUE(WaitUntil([&] { return m_Adapter.WriteText(handle, "x") == 1; }, seconds(60)));
    EXPECT_GE(std::stod(Status("time")), 10);
}

TEST_F(Fault, AWriteFallsShort) {
    Run("'on 2nd write to p1 shorten to 2 bytes', 'on \"abcab\" from p1 reply \"whole\"'");
    const int handle = Open("p1");
    EXPECT_EQ(3, m_Adapter.WriteText(handle, "abc"));
    EXPECT_EQ(2, m_Adapter.WriteText(handle, "abc"));
    EXPECT_EQ("whole", m_Adapter.ReadUntil(handle, "whole"));
    EXPECT_EQ(3, m_Adapter.WriteText(handle, "abc"));
    EXPECT_EQ("open\nwrite 2 took 2 bytes\ngot \"abcab\"\nsent \"whole\"\n", Track("p1"));
}

TEST_F(Fault, AWriteCanTakeNothing) {
    Run("'at 0s shorten write to p1 to 0 bytes'");
    const int handle = Open("p1");
    EXPECT_EQ(0, m_Adapter.WriteText(handle, "abc"));
    EXPECT_EQ(3, m_Adapter.WriteText(handle, "abc"));
}

TEST_F(Fault, ACallLastsAsLongAsItIsDelayed) {
    Run("'at 0s delay write to p1 by 300ms', 'at 0s delay open of p1 by 300ms', "
        "'at 0s delay enumeration by 300ms 2 times'");
    EXPECT_GE(TimeOf([&] { Enumerate(); }), milliseconds(300));
    int handle = 0;
    EXPECT_GE(TimeOf([&] { handle = Open("p1"); }), milliseconds(300));
    EXPECT_GE(TimeOf([&] { m_Adapter.WriteText(handle, "x"); }), milliseconds(300));
    EXPECT_EQ("open\nopen 1 delayed\nwrite 1 delayed\n", Track("p1"));
}

TEST_F(Fault, ADelayEndsWhenTheHostEndsTheSession) {
    Run("'at 0s delay read from p1 by 1h'");
    const int handle = Open("p1");
    std::atomic<bool> isInside{false};
    std::thread reader([&] {
        isInside = true;
        Read(handle);
    });
    ASSERT_TRUE(WaitUntil([&] { return isInside.load(); }));
    End();
    reader.join();
}

TEST_F(Fault, ADelayedEnumerationInsideANoticeEndsWithTheSession) {
    Run("'at 0s pull modem', 'at 10ms delay enumeration by 1h', 'at 20ms plug modem'");
    static const AdapterUnderTest* s_Adapter;
    static std::atomic<bool> s_Inside;
    s_Adapter = &m_Adapter;
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register([](_OS_ADAPT_DEVICESTATUS_TYPE) {
        s_Inside = true;
        s_Adapter->Devices();
    }));
    ASSERT_TRUE(WaitUntil([&] { return s_Inside.load(); }, seconds(60)));
    End();
}

TEST_F(Fault, ADelayedCallCanBeCancelled) {
    Run("'at 0s delay write to p1 by 1h'");
    static const AdapterUnderTest* s_Adapter;
    static int s_Handle;
    static std::atomic<bool> s_Inside;
    s_Adapter = &m_Adapter;
    s_Handle = Open("p1");
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(
                     &thread, nullptr,
                     [](void*) -> void* {
                         s_Inside = true;
                         s_Adapter->WriteText(s_Handle, "x");
                         return nullptr;
                     },
                     nullptr));
    ASSERT_TRUE(WaitUntil([&] { return s_Inside.load(); }));
    pthread_cancel(thread);
    void* result = nullptr;
    pthread_join(thread, &result);
    EXPECT_EQ(PTHREAD_CANCELED, result);
    EXPECT_EQ(1, m_Adapter.WriteText(s_Handle, "x")); // no lock is held
}

TEST_F(Fault, AFaultCanBeOrderedWhileTheHostRuns) {
    Run("");
    const int handle = Open("p1");
    EXPECT_EQ(OS_ADAPT_OK, Read(handle));
    ASSERT_EQ("ok", Command("fail read from p1"));
    EXPECT_EQ(OS_ADAPT_FAILED, Read(handle));
    EXPECT_EQ(OS_ADAPT_OK, Read(handle));
    ASSERT_EQ("ok", Command("fail write to p1 2 times"));
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "x"));
    EXPECT_EQ("fail read from p1\nfail write to p1 2 times\n", Track("commands"));
}

TEST_F(Fault, AnIdlePortsReadFailsAsWell) {
    Run("");
    const int handle = Open("p1");
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(OS_ADAPT_OK, Read(handle)); // by the fast way
    }
    ASSERT_EQ("ok", Command("fail read from p1"));
    EXPECT_EQ(OS_ADAPT_FAILED, Read(handle));
}

TEST_F(Fault, MendingTakesFaultsAway) {
    Run("'at 0s fail write to p1 always'");
    const int handle = Open("p1");
    EXPECT_EQ(-1, m_Adapter.WriteText(handle, "x"));
    ASSERT_EQ("ok", Command("mend p1"));
    EXPECT_EQ(1, m_Adapter.WriteText(handle, "x"));
}

// SPDX-License-Identifier: MIT
#include <pthread.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

using Notices = std::vector<std::string>;

constexpr const char* kBoth = "left(l0 l1) right(r0 r1)";

class Notice : public VirtualBench {
  protected:
    Notice() { UseScenario(kTwoDevices); }

    // As the manager does: a first enumeration, then the registration.
    void Start() const {
        ASSERT_EQ(kBoth, m_Adapter.DevicesText());
        ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    }

    int UnRegister() const { return m_Adapter.UnRegister(NoticeRecorder::OnNotice); }

    AdapterUnderTest m_Adapter;
    NoticeRecorder m_Recorder{m_Adapter};
};

size_t StackOfThisThread() {
    pthread_attr_t attributes;
    size_t size = 0;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &size);
    pthread_attr_destroy(&attributes);
    return size;
}

} // namespace

TEST_F(Notice, NothingIsToldWhileNothingChanges) {
    Start();
    EXPECT_EQ("ok", Command("pull right"));
    EXPECT_EQ((Notices{"- left(l0 l1)"}), m_Recorder.Notices());
    EXPECT_EQ("left(l0 l1)", m_Adapter.DevicesText());
}

TEST_F(Notice, APullAndAPlugAreToldWithTheirOwnTables) {
    Start();
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ("ok", Command("plug left"));
    EXPECT_EQ((Notices{"- right(r0 r1)", std::string("+ ") + kBoth}), m_Recorder.Notices());
}

TEST_F(Notice, AReplugIsAPullOutAndThenAnInsertion) {
    Start();
    EXPECT_EQ("ok", Command("replug left"));
    EXPECT_EQ((Notices{"- right(r0 r1)", std::string("+ ") + kBoth}), m_Recorder.Notices());
}

TEST_F(Notice, AllPortsOfTheOnlyDeviceGoneMeansNoDevice) {
    Start();
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ("ok", Command("unplug-port r0"));
    EXPECT_EQ("ok", Command("unplug-port r1"));
    EXPECT_EQ((Notices{"- right(r0 r1)", "- right(r1)", "- "}), m_Recorder.Notices());
    EXPECT_EQ(0, m_Adapter.Devices()->nDeviceCount);
}

TEST_F(Notice, APortTakenOffAndPutBackIsToldOfItsDevice) {
    Start();
    EXPECT_EQ("ok", Command("unplug-port l0"));
    EXPECT_EQ("ok", Command("plug-port l0"));
    EXPECT_EQ((Notices{"- left(l1) right(r0 r1)", std::string("+ ") + kBoth}),
              m_Recorder.Notices());
}

TEST_F(Notice, WhatHappensDuringANoticeDoesNotChangeItsTableAndIsToldAfterwards) {
    Start();
    m_Recorder.Block();
    ControlClient client(ControlDirectory());
    client.Send("pull left\n");
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    ControlClient other(ControlDirectory());
    other.Send("plug left\n");
    ControlClient third(ControlDirectory());
    third.Send("pull right\n");
    EXPECT_NE(std::string::npos, Command("list").find("device \"right\" absent"));
    m_Recorder.LetGo();
    EXPECT_EQ("ok", client.Reply());
    EXPECT_EQ("ok", other.Reply());
    EXPECT_EQ("ok", third.Reply());
    EXPECT_EQ((Notices{"- right(r0 r1)", std::string("+ ") + kBoth, "- left(l0 l1)"}),
              m_Recorder.Notices());
}

TEST_F(Notice, AStormOfPullsDuringANoticeIsToldAtOnceAfterIt) {
    UseScenario(R"(
[[device]]
name = "a"
[[device.port]]
name = "a0"
[[device]]
name = "b"
[[device.port]]
name = "b0"
[[device]]
name = "c"
[[device.port]]
name = "c0"
[[device]]
name = "d"
[[device.port]]
name = "d0"
)");
    ASSERT_EQ("a(a0) b(b0) c(c0) d(d0)", m_Adapter.DevicesText());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    m_Recorder.Block();
    ControlClient first(ControlDirectory());
    first.Send("pull a\n");
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    ControlClient second(ControlDirectory());
    second.Send("pull b\n");
    ControlClient third(ControlDirectory());
    third.Send("pull c\n");
    EXPECT_TRUE(WaitUntil(
        [&] { return Command("list").find("device \"c\" absent") != std::string::npos; }));
    m_Recorder.LetGo();
    EXPECT_EQ("ok", second.Reply());
    EXPECT_EQ("ok", third.Reply());
    EXPECT_EQ((Notices{"- b(b0) c(c0) d(d0)", "- d(d0)"}), m_Recorder.Notices());
}

TEST_F(Notice, WhatChangedBetweenTheFirstEnumerationAndTheRegistrationIsTold) {
    ASSERT_EQ(kBoth, m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ("ok", Command("replug right"));
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    ASSERT_TRUE(m_Recorder.WaitForCount(2));
    EXPECT_EQ((Notices{"- ", "+ right(r0 r1)"}), m_Recorder.Notices());
}

TEST_F(Notice, WithoutARegistrationAnEnumerationSaysWhatIsTrueNow) {
    ASSERT_EQ(kBoth, m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ("right(r0 r1)", m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("plug left"));
    EXPECT_EQ(kBoth, m_Adapter.DevicesText());
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ((Notices{"- right(r0 r1)"}), m_Recorder.Notices());
}

TEST_F(Notice, ANewRegistrationReplacesTheOldOne) {
    static std::atomic<int> s_Calls{0};
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register([](_OS_ADAPT_DEVICESTATUS_TYPE) { ++s_Calls; }));
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    EXPECT_EQ("ok", Command("pull left"));
    EXPECT_EQ(0, s_Calls);
    EXPECT_EQ(1U, m_Recorder.Notices().size());
}

TEST_F(Notice, TheNotifyingThreadIsOneOfItsOwnWithAMebibyteOfStack) {
    size_t stack = 0;
    pthread_t thread{};
    m_Recorder.OnEach([&] {
        stack = StackOfThisThread();
        thread = pthread_self();
    });
    Start();
    ASSERT_EQ("ok", Command("pull left"));
    EXPECT_GE(stack, 1024U * 1024U);
    EXPECT_EQ(0, pthread_equal(thread, pthread_self()));
}

TEST_F(Notice, AllSevenFunctionsCanBeCalledInsideANotice) {
    int handle = 0;
    long written = 0;
    m_Recorder.OnEach([&] {
        handle = m_Adapter.OpenPort("r0");
        written = m_Adapter.WriteText(handle, "abc");
        m_Adapter.ReadText(handle);
        m_Adapter.Close(handle);
    });
    Start();
    ASSERT_EQ("ok", Command("pull left"));
    EXPECT_GT(handle, 0);
    EXPECT_EQ(3, written);
}

TEST_F(Notice, RegistrationDoesNotWaitForANotice) {
    Start();
    m_Recorder.Block();
    ControlClient client(ControlDirectory());
    client.Send("pull left\n");
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.Register(NoticeRecorder::OnNotice));
    m_Recorder.LetGo();
    EXPECT_EQ("ok", client.Reply());
}

TEST_F(Notice, UnRegistrationWaitsForTheNoticeThatRuns) {
    Start();
    m_Recorder.Block();
    ControlClient client(ControlDirectory());
    client.Send("pull left\n");
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    std::atomic<bool> hasReturned{false};
    std::thread thread([&] {
        UnRegister();
        hasReturned = true;
    });
    EXPECT_FALSE(WaitUntil([&] { return hasReturned.load(); }, std::chrono::milliseconds(200)));
    m_Recorder.LetGo();
    thread.join();
    EXPECT_EQ(1U, m_Recorder.Notices().size());
}

TEST_F(Notice, UnRegistrationWithoutARegistrationSucceeds) {
    EXPECT_EQ(OS_ADAPT_OK, UnRegister());
    EXPECT_EQ(kBoth, m_Adapter.DevicesText());
    EXPECT_EQ(OS_ADAPT_OK, UnRegister());
    EXPECT_EQ(OS_ADAPT_OK, UnRegister());
}

TEST_F(Notice, UnRegistrationFromTheNoticeItselfDoesNotWaitForItself) {
    const size_t threads = RunningThreads();
    std::atomic<int> result{0};
    m_Recorder.OnEach([&] { result = UnRegister(); });
    Start();
    ControlClient(ControlDirectory()).Send("pull left\n");
    ASSERT_TRUE(m_Recorder.WaitForCount(1));
    EXPECT_TRUE(WaitUntil([&] { return RunningThreads() == threads; }));
    EXPECT_EQ(OS_ADAPT_OK, result);
    EXPECT_EQ(OS_ADAPT_OK, UnRegister());
}

TEST_F(Notice, ARegistrationFromTheNoticeThatUnRegisteredGoesOn) {
    std::atomic<bool> isRegistered{false};
    m_Recorder.OnEach([&] {
        if (!isRegistered) {
            UnRegister();
            m_Adapter.Register(NoticeRecorder::OnNotice);
            isRegistered = true;
        }
    });
    Start();
    ControlClient(ControlDirectory()).Send("pull left\n");
    ASSERT_TRUE(WaitUntil([&] { return isRegistered.load(); }));
    // Everything is as at a start, and the listener is led there from what the notice answered.
    ASSERT_TRUE(m_Recorder.WaitForCount(3));
    EXPECT_EQ(kBoth, m_Adapter.DevicesText());
    EXPECT_EQ("ok", Command("pull right"));
    EXPECT_EQ((std::vector<std::string>{"- right(r0 r1)", "- ", std::string("+ ") + kBoth,
                                        "- left(l0 l1)"}),
              m_Recorder.Notices());
}

TEST_F(Notice, ACancelledUnRegistrationCanBeRepeated) {
    Start();
    m_Recorder.Block();
    ControlClient client(ControlDirectory());
    client.Send("pull left\n");
    ASSERT_TRUE(m_Recorder.WaitUntilInside());
    pthread_t thread{};
    ASSERT_EQ(0, pthread_create(
                     &thread, nullptr,
                     [](void* adapter) -> void* {
                         static_cast<AdapterUnderTest*>(adapter)->UnRegister(nullptr);
                         return nullptr;
                     },
                     &m_Adapter));
    ASSERT_EQ(0, pthread_cancel(thread));
    void* result = nullptr;
    ASSERT_EQ(0, pthread_join(thread, &result));
    EXPECT_EQ(PTHREAD_CANCELED, result);
    m_Recorder.LetGo();
    EXPECT_EQ(OS_ADAPT_OK, UnRegister());
    EXPECT_EQ(1U, m_Recorder.Notices().size());
}

TEST_F(Notice, TwoHundredPlugsAndPullsAreToldOneByOne) {
    Start();
    ControlClient client(ControlDirectory());
    ASSERT_NE("", client.Ask("list")); // both ends of the connection are open now
    const size_t descriptors = OpenDescriptors();
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ("ok", client.Ask("pull left"));
        const int handle = m_Adapter.OpenPort("r0");
        ASSERT_EQ("ok", client.Ask("plug left"));
        const int forgotten = m_Adapter.OpenPort("l0");
        ASSERT_GT(forgotten, handle);
    }
    const Notices notices = m_Recorder.Notices();
    ASSERT_EQ(400U, notices.size());
    for (size_t i = 0; i < notices.size(); i += 2) {
        ASSERT_EQ("- right(r0 r1)", notices[i]);
        ASSERT_EQ(std::string("+ ") + kBoth, notices[i + 1]);
    }
    // l0 and r0 are open, and the set by which open ports are watched.
    EXPECT_EQ(descriptors + 3, OpenDescriptors());
}

TEST_F(Notice, ANoticeThatUnRegistersGoesOnSeeingItsTable) {
    std::string seen;
    std::atomic<bool> isSeen{false};
    m_Recorder.OnEach([&] {
        UnRegister();
        seen = m_Adapter.DevicesText();
        isSeen = true;
    });
    Start();
    ControlClient(ControlDirectory()).Send("pull left\n");
    ASSERT_TRUE(WaitUntil([&] { return isSeen.load(); }));
    EXPECT_EQ("right(r0 r1)", seen);
    EXPECT_TRUE(WaitUntil([&] { return m_Adapter.DevicesText() == kBoth; }));
}

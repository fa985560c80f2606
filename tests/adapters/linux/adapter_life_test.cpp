// SPDX-License-Identifier: MIT
//
// What the adapter leaves behind: nothing.
#include "tests/adapters/linux/linux_bench.h"
#include "tests/adapters/linux/mock_calls.h"
#include "tests/adapters/linux/sample_devices.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

// Counts what was there before the adapter started.
template <typename Bench> class Counting : public Bench {
  protected:
    template <typename... Arguments>
    explicit Counting(const Arguments&... arguments) : Bench(arguments...) {
        this->m_Machine.Plug(Neighbour());
        m_Threads = RunningThreads();
        m_Descriptors = OpenDescriptors();
    }

    void ExpectNothingLeft() const {
        EXPECT_EQ(m_Threads, RunningThreads());
        EXPECT_EQ(m_Descriptors, OpenDescriptors());
        EXPECT_TRUE(OpenMonitors().empty());
    }

    size_t m_Threads = 0;
    size_t m_Descriptors = 0;
};

class AdapterLife : public Counting<EitherSource> {};

class UnloadedAdapter : public Counting<LinuxBench>,
                        public testing::WithParamInterface<const char*> {
  protected:
    UnloadedAdapter() : Counting(GetParam()) {}
};

} // namespace

KOVASMGR_EITHER_SOURCE(AdapterLife);
KOVASMGR_EITHER_SOURCE(UnloadedAdapter);

TEST_P(AdapterLife, AfterUnRegistrationNoThreadAndNoDescriptorIsLeft) {
    Start();
    EXPECT_FALSE(OpenMonitors().empty());
    ASSERT_GT(m_Adapter.OpenPort("/dev/ttyUSB0"), 0);
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(NoticeRecorder::OnNotice));
    EXPECT_TRUE(WaitUntil([this] { return OpenDescriptors() == m_Descriptors; }));
    ExpectNothingLeft();
}

TEST_P(AdapterLife, UnRegistrationInTheMiddleOfAnArrivalEndsIt) {
    Start();
    m_Machine.Appear(Other());
    m_Machine.KernelSays("add", Other());
    EXPECT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(NoticeRecorder::OnNotice));
    m_Machine.UdevSays("add", Other());
    const size_t notices = m_Recorder.Notices().size();
    EXPECT_LE(notices, 1U);
    m_Machine.Vanish(Other());
    EXPECT_TRUE(WaitUntil([this] { return OpenDescriptors() == m_Descriptors; }));
    ExpectNothingLeft();
    EXPECT_EQ(notices, m_Recorder.Notices().size());
}

TEST_P(UnloadedAdapter, ItReallyUnloadsTimeAfterTime) {
    for (int i = 0; i < 10; ++i) {
        AdapterUnderTest adapter(KOVASMGR_LINUX_ADAPTER);
        NoticeRecorder recorder(adapter);
        ASSERT_EQ(kNeighbour, adapter.DevicesText());
        ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
        m_Machine.Plug(Other());
        ASSERT_TRUE(recorder.WaitForCount(1));
        m_Machine.Pull(Other());
        ASSERT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
        adapter.Unload();
        ASSERT_FALSE(AdapterUnderTest::IsLoaded(KOVASMGR_LINUX_ADAPTER));
    }
    EXPECT_TRUE(WaitUntil([this] { return OpenDescriptors() == m_Descriptors; }));
    ExpectNothingLeft();
}

TEST_P(UnloadedAdapter, WhatARegisteredHostLeftIsReclaimedByTheUnloading) {
    AdapterUnderTest adapter(KOVASMGR_LINUX_ADAPTER);
    NoticeRecorder recorder(adapter);
    ASSERT_EQ(kNeighbour, adapter.DevicesText());
    ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    ASSERT_GT(adapter.OpenPort("/dev/ttyUSB0"), 0);
    adapter.Unload();
    EXPECT_TRUE(WaitUntil([this] { return OpenDescriptors() == m_Descriptors; }));
    ExpectNothingLeft();
}

TEST_P(UnloadedAdapter, ItCanBeUnloadedWhileEventsCome) {
    for (int i = 0; i < 20; ++i) {
        AdapterUnderTest adapter(KOVASMGR_LINUX_ADAPTER);
        ASSERT_EQ(kNeighbour, adapter.DevicesText());
        m_Machine.Plug(Other());
        m_Machine.Pull(Other());
        adapter.Unload();
    }
    ExpectNothingLeft();
}

TEST_P(AdapterLife, AfterANewRegistrationEventsAreToldAgain) {
    for (int i = 0; i < 10; ++i) {
        Start();
        const size_t before = m_Recorder.Notices().size();
        m_Machine.Plug(Other());
        ASSERT_TRUE(m_Recorder.WaitForCount(before + 1));
        ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(NoticeRecorder::OnNotice));
        m_Machine.Pull(Other());
    }
    EXPECT_EQ(10U, m_Recorder.Notices().size());
}

TEST_P(AdapterLife, WhatWentWhileNobodyListenedIsNotThereAfterwards) {
    ASSERT_EQ(kNeighbour, Devices());
    ASSERT_EQ(OS_ADAPT_OK, m_Adapter.UnRegister(NoticeRecorder::OnNotice));
    m_Machine.Pull(Neighbour());
    EXPECT_EQ("", Devices());
}

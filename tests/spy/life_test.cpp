// SPDX-License-Identifier: MIT
//
// Registration, notices, cancellation, and what is left at the end.
#include <pthread.h>

#include <atomic>
#include <filesystem>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"
#include "tests/spy/spy_bench.h"

namespace {

namespace fs = std::filesystem;

std::atomic<int> s_Told{0};
std::atomic<const AdapterUnderTest*> s_Adapter{nullptr}; // un-registers inside the next notice

void OnNotice(_OS_ADAPT_DEVICESTATUS_TYPE) {
    ++s_Told;
    if (const AdapterUnderTest* const adapter = s_Adapter.exchange(nullptr)) {
        adapter->UnRegister(OnNotice);
    }
}

class SpyLife : public SpyBench {
  protected:
    SpyLife() { FakeDevices().Device("Modem").Port("COM1").Port("COM2").Apply(*m_Fake); }

    void ExpectNothingLeft() const {
        EXPECT_EQ(m_Threads, RunningThreads());
        EXPECT_EQ(m_Descriptors, OpenDescriptors());
        const fs::path base = fs::path(m_Scratch.Path()) / "kovasmgr-spy";
        EXPECT_TRUE(!fs::exists(base) || fs::is_empty(base));
    }

    FakeAdapterLibrary m_Fake{FakeFile()};
    size_t m_Threads = RunningThreads();
    size_t m_Descriptors = OpenDescriptors();
};

// Another spy with another adapter behind it, whose notices come on a thread of their own.
void UseVirtualAdapter(const ScratchDirectory& scratch) {
    setenv("KOVASMGR_SPY_ADAPTER", "virtual", 1);
    setenv("KOVASMGR_VIRTUAL_DIR", (scratch.Path() + "/control").c_str(), 1);
    unsetenv("KOVASMGR_VIRTUAL_SCENARIO");
}

} // namespace

TEST_F(SpyLife, UnRegistrationLeavesNoThreadNoDescriptorAndNoFile) {
    const std::string recording = Record();
    Set("PCAP", m_Scratch.Path() + "/capture.pcapng");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_EQ("Modem(COM1 COM2)", spy.DevicesText());
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    const int handle = spy.OpenPort("COM1");
    EXPECT_EQ(3, spy.WriteText(handle, "abc"));
    EXPECT_NE(m_Descriptors, OpenDescriptors());
    EXPECT_EQ(OS_ADAPT_OK, spy.Close(handle));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(OnNotice));
    ExpectNothingLeft();
    EXPECT_EQ(OS_ADAPT_OK, spy.Close(handle)); // late, and recorded all the same
    EXPECT_EQ(2, CountOf(FileText(recording), "\"call\":\"close\""));
    ExpectNothingLeft();
}

TEST_F(SpyLife, ItReallyUnloadsTimeAfterTime) {
    UseVirtualAdapter(m_Scratch);
    Record();
    for (int i = 0; i < 20; ++i) {
        AdapterUnderTest spy(KOVASMGR_SPY);
        ASSERT_NE(std::string::npos, spy.DevicesText().find("virtual-modem"));
        ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
        ASSERT_GT(spy.OpenPort("virtual-modem-0"), 0);
        if (i % 2 == 0) { // what an unloading finds is reclaimed
            ASSERT_EQ(OS_ADAPT_OK, spy.UnRegister(OnNotice));
        }
        spy.Unload();
        ASSERT_FALSE(AdapterUnderTest::IsLoaded(KOVASMGR_SPY));
        ASSERT_FALSE(AdapterUnderTest::IsLoaded(KOVASMGR_VIRTUAL_ADAPTER));
        ExpectNothingLeft();
    }
}

TEST_F(SpyLife, UnloadingUnRegistersFirst) {
    AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    spy.Unload();
    EXPECT_EQ("UnRegister", m_Fake->Journal().back());
    EXPECT_FALSE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    ExpectNothingLeft();
}

TEST_F(SpyLife, CallsOfManyThreadsAreLinesInTheirOrder) {
    constexpr int kThreads = 8;
    constexpr int kCalls = 1000;
    const std::string recording = Record();
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const int handle = spy.OpenPort("COM1");
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kCalls; ++i) {
                spy.WriteText(handle, "abc");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
    std::istringstream lines(FileText(recording));
    std::string line;
    int count = 0;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
        ASSERT_EQ(0U, line.find("{\"n\":" + std::to_string(++count) + ",\"t_us\":")) << line;
        ASSERT_EQ('}', line.back());
    }
    EXPECT_EQ(2 + kThreads * kCalls, count);
}

TEST_F(SpyLife, NothingIsDoneBeforeTheFirstCall) {
    const std::string recording = Record();
    AdapterUnderTest spy(KOVASMGR_SPY);
    EXPECT_FALSE(fs::exists(recording));
    ExpectNothingLeft();
}

TEST_F(SpyLife, UnwatchedItStandsAside) {
    Set("STATS", "off");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    EXPECT_EQ("Modem(COM1 COM2)", spy.DevicesText());
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    const int handle = spy.OpenPort("COM1");
    EXPECT_EQ(3, spy.WriteText(handle, "abc"));
    m_Fake->PushData("COM1", "hi");
    EXPECT_EQ("hi", spy.ReadText(handle));
    m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT);
    EXPECT_EQ(1, s_Told);
    EXPECT_EQ(OS_ADAPT_OK, spy.Close(handle));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(OnNotice));
    ExpectNothingLeft();
}

TEST_F(SpyLife, UnwatchedItStandsAsideFromTheFirstCallOn) {
    Set("STATS", "off");
    AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    spy.Unload(); // without an un-registration: the callback is the host's own
    EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    EXPECT_EQ(1, s_Told);
    EXPECT_EQ("Register", m_Fake->Journal().back());
}

TEST_F(SpyLife, NoticesArePassedOnAndRecordedWhateverTheirStatus) {
    const std::string recording = Record();
    const AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    for (const int status : {0, 1, 5}) {
        EXPECT_TRUE(m_Fake->NotifyOnThread(status));
    }
    EXPECT_EQ(3, s_Told);
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(OnNotice));
    const std::string text = FileText(recording);
    for (const char* const status : {"insert", "pullout", "5"}) {
        EXPECT_EQ(1, CountOf(text, "\"call\":\"notice\",\"status\":\"" + std::string(status)));
    }
}

TEST_F(SpyLife, AfterUnRegistrationNoticesAreTheOtherAdaptersDoing) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(OnNotice));
    EXPECT_FALSE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    EXPECT_EQ(0, s_Told);
    m_Fake->KeepNotifyingAfterUnRegister(true);
    EXPECT_TRUE(m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT));
    EXPECT_EQ(1, s_Told);
}

TEST_F(SpyLife, ARegistrationThatFailsKeepsTheOneBefore) {
    const AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    m_Fake->SetResult(FakeCall::kRegister, OS_ADAPT_FAILED);
    EXPECT_EQ(OS_ADAPT_FAILED, spy.Register([](_OS_ADAPT_DEVICESTATUS_TYPE) { s_Told += 100; }));
    m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT);
    EXPECT_EQ(1, s_Told);
    spy.UnRegister(OnNotice);
}

TEST_F(SpyLife, UnRegistrationInsideANoticeDoesNotWaitAndLeavesNothing) {
    UseVirtualAdapter(m_Scratch);
    Record();
    const AdapterUnderTest spy(KOVASMGR_SPY);
    ASSERT_NE(std::string::npos, spy.DevicesText().find("virtual-modem"));
    s_Adapter = &spy;
    ASSERT_EQ(OS_ADAPT_OK, spy.Register(OnNotice));
    std::system(("'" KOVASMGR_VIRTUAL_PROGRAM "' --dir '" + m_Scratch.Path() +
                 "/control' pull virtual-sensor >/dev/null 2>&1")
                    .c_str());
    EXPECT_TRUE(WaitUntil([] { return s_Told == 1; }, std::chrono::seconds(60)));
    EXPECT_TRUE(
        WaitUntil([&] { return OpenDescriptors() == m_Descriptors; }, std::chrono::seconds(60)));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(OnNotice));
    ExpectNothingLeft();
}

TEST_F(SpyLife, ACallThatIsCancelledHoldsNothingAndIsALine) {
    const std::string recording = Record();
    Set("PCAP", m_Scratch.Path() + "/capture.pcapng");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const int handle = spy.OpenPort("COM1");
    m_Fake->Block(FakeCall::kRead, FakeBlock::kInRead);
    // Not on the thread's own stack, which a sanitizer would take for in use after a cancellation.
    struct Reading {
        const AdapterUnderTest& adapter;
        int handle;
        char byte = 0;
        long count = 0;
    } reading{spy, handle};
    pthread_t thread{};
    pthread_create(
        &thread, nullptr,
        [](void* argument) -> void* {
            auto& call = *static_cast<Reading*>(argument);
            call.adapter.Read(call.handle, &call.byte, 1, &call.count);
            return nullptr;
        },
        &reading);
    ASSERT_TRUE(WaitUntil([&] { return m_Fake->Blocked() == 1; }, std::chrono::seconds(60)));
    pthread_cancel(thread);
    void* end = nullptr;
    pthread_join(thread, &end);
    EXPECT_EQ(PTHREAD_CANCELED, end);
    m_Fake->Unblock();
    EXPECT_EQ("", spy.ReadText(handle));
    EXPECT_EQ(3, spy.WriteText(handle, "abc"));
    const std::string text = FileText(recording);
    EXPECT_EQ(1, CountOf(text, "\"unfinished\":true"));
    EXPECT_EQ(2, CountOf(text, "\"call\":\"read\""));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
}

TEST_F(SpyLife, ADelayCanBeCancelled) {
    Set("FAULTS", "close:1=delay:60s");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const int handle = spy.OpenPort("COM1");
    struct Closing {
        const AdapterUnderTest& adapter;
        int handle;
    } closing{spy, handle};
    pthread_t thread{};
    pthread_create(
        &thread, nullptr,
        [](void* argument) -> void* {
            const auto& call = *static_cast<Closing*>(argument);
            call.adapter.Close(call.handle);
            return nullptr;
        },
        &closing);
    pthread_cancel(thread);
    void* end = nullptr;
    pthread_join(thread, &end);
    EXPECT_EQ(PTHREAD_CANCELED, end);
    EXPECT_EQ(OS_ADAPT_OK, spy.Close(handle));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
}

TEST_F(SpyLife, CountsThatAreWrongDoNoHarm) {
    const std::string recording = Record();
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const int handle = spy.OpenPort("COM1");
    for (const long count : {-1L, 1000000L}) {
        FakeRead answer;
        answer.bytes = "ab";
        answer.count = count;
        m_Fake->PushRead("COM1", answer);
        char buffer[4] = {};
        long read = 0;
        EXPECT_EQ(OS_ADAPT_OK, spy.Read(handle, buffer, sizeof buffer, &read));
        EXPECT_EQ(count, read);
        m_Fake->SetWriteCount(count);
        long written = 0;
        EXPECT_EQ(OS_ADAPT_OK, spy.Write(handle, "ab", 2, &written));
        EXPECT_EQ(count, written);
    }
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
    const std::string text = FileText(recording);
    EXPECT_EQ(2, CountOf(text, "\"reported\":-1"));
    EXPECT_EQ(2, CountOf(text, "\"reported\":1000000"));
}

TEST_F(SpyLife, TextsWithoutATerminatorEndWithTheirArrays) {
    const std::string recording = Record();
    FakeDevices().Device(std::string(128, 'd')).Port(std::string(256, 'p')).Apply(*m_Fake);
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const auto list = spy.Devices();
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
    const std::string text = FileText(recording);
    EXPECT_EQ(1, CountOf(text, "\"name\":\"" + std::string(128, 'd') + "\""));
    EXPECT_EQ(1, CountOf(text, "\"name\":\"" + std::string(256, 'p') + "\""));
}

TEST_F(SpyLife, NumbersOfDevicesAndPortsThatAreWrongDoNoHarm) {
    Record();
    auto devices = FakeDevices().Device("Modem").Port("COM1").PortCount(1000).DeviceCount(-5);
    const AdapterUnderTest spy(KOVASMGR_SPY);
    for (const int count : {-5, 1, 1000000}) {
        devices.DeviceCount(count).Apply(*m_Fake);
        EXPECT_EQ(count, spy.Devices()->nDeviceCount);
    }
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
}

TEST_F(SpyLife, NullPointersAreTheOtherAdaptersAffair) {
    UseVirtualAdapter(m_Scratch);
    Record();
    Set("PCAP", m_Scratch.Path() + "/capture.pcapng");
    const AdapterUnderTest spy(KOVASMGR_SPY);
    const int handle = spy.OpenPort("virtual-modem-0");
    int other = 0;
    long count = 0;
    EXPECT_NE(OS_ADAPT_OK, spy.Open(nullptr, &other));
    EXPECT_NE(OS_ADAPT_OK, spy.Open("virtual-modem-0", nullptr));
    EXPECT_NE(OS_ADAPT_OK, spy.Enumerate(OS_ADAPT_ENUM_ALL, nullptr));
    EXPECT_NE(OS_ADAPT_OK, spy.Register(nullptr));
    EXPECT_NE(OS_ADAPT_OK, spy.Write(handle, nullptr, 3, &count));
    EXPECT_NE(OS_ADAPT_OK, spy.Write(handle, "abc", 3, nullptr));
    EXPECT_NE(OS_ADAPT_OK, spy.Read(handle, nullptr, 3, &count));
    EXPECT_NE(OS_ADAPT_OK, spy.Write(handle, "abc", -1, &count));
    EXPECT_EQ(OS_ADAPT_OK, spy.UnRegister(nullptr));
}

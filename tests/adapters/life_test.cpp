// SPDX-License-Identifier: MIT
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>

#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/adapters/virtual_bench.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace fs = std::filesystem;

namespace {

class Life : public VirtualBench {
  protected:
    // The exit status of the host in this mode of ending; -1 for a signal.
    int EndOfHost(const std::string& mode) const {
        const pid_t child = fork();
        if (child == 0) {
            execl(KOVASMGR_EXITING_HOST, KOVASMGR_EXITING_HOST, mode.c_str(), nullptr);
            _exit(127);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    void ExpectCleanEnd(const std::string& mode) const {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(0, EndOfHost(mode));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
        EXPECT_TRUE(fs::is_empty(ControlDirectory()));
    }

    const size_t m_Threads = RunningThreads();
    const size_t m_Descriptors = OpenDescriptors();

    void ExpectNothingLeft() const {
        EXPECT_EQ(m_Threads, RunningThreads());
        EXPECT_EQ(m_Descriptors, OpenDescriptors());
        EXPECT_TRUE(fs::is_empty(ControlDirectory()));
    }
};

} // namespace

TEST_F(Life, AfterUnRegistrationNoThreadAndNoDescriptorIsLeft) {
    const AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    adapter.Devices();
    ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    const int handle = adapter.OpenPort("virtual-modem-0");
    EXPECT_EQ(2, adapter.WriteText(handle, "AT"));
    EXPECT_EQ(OS_ADAPT_OK, adapter.Close(handle));
    EXPECT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
    ExpectNothingLeft();
}

TEST_F(Life, UnRegistrationClosesWhatTheHostForgot) {
    const AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    const int handle = adapter.OpenPort("virtual-modem-0");
    ASSERT_GT(handle, 0);
    EXPECT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
    ExpectNothingLeft();
    EXPECT_EQ(-1, adapter.WriteText(handle, "x"));
    EXPECT_EQ(OS_ADAPT_OK, adapter.Close(handle));
}

TEST_F(Life, TheAdapterCanBeUsedWithoutARegistration) {
    {
        const AdapterUnderTest adapter;
        const int handle = adapter.OpenPort("virtual-modem-0");
        adapter.WriteText(handle, "AT\r");
        EXPECT_EQ("AT\r\r\nOK\r\n", adapter.ReadUntil(handle, "OK\r\n"));
    }
    ExpectNothingLeft();
}

TEST_F(Life, UnloadingReclaimsWhatARegisteredHostLeft) {
    AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    ASSERT_GT(adapter.OpenPort("virtual-modem-0"), 0);
    adapter.Unload();
    EXPECT_FALSE(AdapterUnderTest::IsLoaded());
    ExpectNothingLeft();
}

TEST_F(Life, ItReallyUnloadsTimeAfterTime) {
    for (int i = 0; i < 30; ++i) {
        AdapterUnderTest adapter;
        NoticeRecorder recorder(adapter);
        ASSERT_EQ(3U, adapter.DevicesText().find("tual-modem("));
        ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
        ASSERT_EQ("ok", Command("replug virtual-modem"));
        ASSERT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
        adapter.Unload();
        ASSERT_FALSE(AdapterUnderTest::IsLoaded());
    }
    ExpectNothingLeft();
}

TEST_F(Life, RegistrationAndUnRegistrationCanAlternate) {
    const AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    for (int i = 0; i < 30; ++i) {
        ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
        ASSERT_EQ("ok", Command("pull virtual-sensor"));
        ASSERT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
    }
    EXPECT_EQ(30U, recorder.Notices().size());
    ExpectNothingLeft();
}

TEST_F(Life, AStartWithoutDescriptorsFailsWithAReasonAndALaterOneWorks) {
    const AdapterUnderTest adapter;
    // A sanitizer needs a descriptor where it meets a type for the first time.
    ASSERT_EQ(2, adapter.Devices()->nDeviceCount);
    ASSERT_EQ("error no device 'nobody'", Command("pull nobody"));
    ASSERT_EQ(OS_ADAPT_OK, adapter.UnRegister(nullptr));
    NoticeRecorder recorder(adapter);
    const auto list = std::make_unique<_OS_ADAPT_DEVICEPORTLIST>();
    {
        const DescriptorsUsedUp usedUp;
        EXPECT_NE(OS_ADAPT_OK, adapter.Enumerate(OS_ADAPT_ENUM_ALL, list.get()));
        EXPECT_NE(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    }
    EXPECT_NE(0, LogLines("Too many open files"));
    EXPECT_EQ(2, adapter.Devices()->nDeviceCount);
    EXPECT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    EXPECT_EQ("ok", Command("pull virtual-modem"));
    EXPECT_EQ(1U, recorder.Notices().size());
}

TEST_F(Life, AHostMayExitWhileItsThreadsAreInsideTheAdapter) { ExpectCleanEnd("busy"); }

TEST_F(Life, AHostMayExitInsideANotice) { ExpectCleanEnd("inside-notice"); }

TEST_F(Life, AHostMayExitWhileANoticeIsStuck) { ExpectCleanEnd("stuck-notice"); }

TEST_F(Life, AHostMayExitWithoutReleasingTheManager) {
    fs::create_symlink(KOVASMGR_VIRTUAL_ADAPTER, "libOSAdapt.so");
    ExpectCleanEnd("manager");
}

TEST_F(Life, AForkedChildThatExitsLeavesItsParentAlone) {
    // What only the parent's threads refer to counts as leaked in the child.
    setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
    ExpectCleanEnd("fork");
}

TEST_F(Life, NothingIsInheritedByAProgramThatTheHostStarts) {
    const AdapterUnderTest adapter;
    NoticeRecorder recorder(adapter);
    ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
    ASSERT_GT(adapter.OpenPort("virtual-modem-0"), 0);
    const ControlClient client(ControlDirectory());
    FILE* const pipe = popen("ls -l /proc/self/fd", "re");
    std::string text;
    char buffer[512];
    while (fgets(buffer, sizeof buffer, pipe) != nullptr) {
        text += buffer;
    }
    pclose(pipe);
    EXPECT_EQ(std::string::npos, text.find("/dev/ptmx")) << text;
    EXPECT_EQ(std::string::npos, text.find("/dev/pts/ptmx")) << text;
    EXPECT_EQ(std::string::npos, text.find("eventfd")) << text;
    EXPECT_EQ(std::string::npos, text.find(ControlDirectory())) << text;
}

TEST_F(Life, AHostsOwnFunctionsOfTheSameNameDoNotCaptureTheLog) {
    EXPECT_EQ(0, EndOfHost("namesakes"));
    EXPECT_EQ(1, LogLines("port 'nobody' cannot be opened"));
}

// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <thread>

#include "KOVASMgrLog.h"
#include "tests/harness/process_counts.h"
#include "tests/system/attached_host.h"
#include "tests/system/stuck_callbacks.h"

// Each case ends a process of its own, while something of the library is still alive in it. The
// exit status is what the host asked for: no crash, no finding of a sanitizer.

namespace {

constexpr int kAsked = 42;

void ExitFromRead(void*, int) { std::exit(kAsked); }
void ExitFromNotice(_KOVAMGR_DEV_STATE_TYPE_) { std::exit(kAsked); }

// Logs when the process's static objects are destroyed: after the library's own, because it was
// made before them, and before the library's own, because it was made after them.
struct LogsAtTheEnd {
    ~LogsAtTheEnd() {
        for (int i = 0; i < 100; ++i) {
            INFO_LOG("a host's static destructor %d", i);
        }
        char now[64] = {};
        PelMgr_GetCurrentTime(now, nullptr);
    }
};

class ProcessEnd : public AttachedHost {
  protected:
    // A process that ends inside a case leaves its directory to the exit handler.
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        static const std::string* path = nullptr;
        path = new std::string(m_Scratch.Path()); // outlives the static objects
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(*path, ignored);
        });
    }

    // Ends the process in another way than the case asks for.
    static void Must(bool condition) {
        if (!condition || testing::Test::HasFailure()) {
            std::abort();
        }
    }

    void StartReading(KOVAMGR_READ_CALLBACK callback) {
        InitAndOpen();
        Must(KOVAMGR_RegisterCommDataReadCallback(callback, 1) == KOVAMGR_OK);
        m_Fake->PushData("COM1", "data");
    }

    void WaitForReads() {
        const long reads = m_Fake->Calls(FakeCall::kRead);
        Must(WaitUntil([&] { return m_Fake->Calls(FakeCall::kRead) > reads + 2; }));
    }

    // For those who wait for the process to end under them.
    static void WaitForTheEnd() {
        WaitUntil([] { return false; });
    }
};

using ProcessEndDeathTest = ProcessEnd;

} // namespace

TEST_F(ProcessEndDeathTest, ExitWhileTheReadThreadIsAlive) {
    EXPECT_EXIT(
        {
            InitAndOpen();
            WaitForReads();
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ExitWhileTheReadThreadLogsInEverySweep) {
    EXPECT_EXIT(
        {
            m_Fake->SetResult(FakeCall::kRead, OS_ADAPT_FAILED);
            InitAndOpen();
            WaitForReads();
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ExitFromAReadCallback) {
    EXPECT_EXIT(
        {
            StartReading(ExitFromRead);
            WaitForTheEnd();
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ExitFromADeviceStateCallback) {
    EXPECT_EXIT(
        {
            InitAndOpen();
            Must(KOVAMGR_RegisterDeviceStateProcessCallback(ExitFromNotice) == KOVAMGR_OK);
            m_Fake->NotifyOnThread(OS_ADAPT_DEVICE_INSERT);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ExitWhileNotificationsArrive) {
    EXPECT_EXIT(
        {
            InitAndOpen();
            std::thread([this] {
                for (;;) {
                    m_Fake->Notify(OS_ADAPT_DEVICE_INSERT);
                }
            }).detach();
            Must(WaitUntil([&] { return m_Fake->Calls(FakeCall::kEnum) > 10; }));
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ExitWhileACallbackSpins) {
    EXPECT_EXIT(
        {
            StartReading(Spin);
            Must(WaitUntilStuck());
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ExitWhileAnAbandonedThreadSpins) {
    EXPECT_EXIT(
        {
            StartReading(Spin);
            Must(WaitUntilStuck());
            KOVAMGR_Release();
            Must(LogLines("ERRO:") == 1);
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, LoggingInStaticDestructorsOfTheHost) {
    EXPECT_EXIT(
        {
            static LogsAtTheEnd madeBeforeInit;
            InitAndOpen();
            static LogsAtTheEnd madeAfterInit;
            Must(LogLines("Leave DetermineAddPort()") == 1);
            KOVAMGR_Release();
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEndDeathTest, ReleaseInAnAtExitHandler) {
    EXPECT_EXIT(
        {
            std::atexit([] { KOVAMGR_Release(); });
            InitAndOpen();
            WaitForReads();
            std::exit(kAsked);
        },
        testing::ExitedWithCode(kAsked), "");
}

TEST_F(ProcessEnd, AHundredCyclesOfInitAndReleaseLeaveNoDescriptorAndNoThread) {
    CheckThatANewManagerWorks(); // opens the log, which stays open
    const std::size_t descriptors = OpenDescriptors();
    for (int cycle = 0; cycle < 100; ++cycle) {
        InitAndOpen();
        EXPECT_TRUE(WaitUntilThreadsAre(m_Threads + 1));
        EXPECT_EQ(KOVAMGR_OK, KOVAMGR_Release());
    }
    EXPECT_EQ(descriptors, OpenDescriptors());
    EXPECT_TRUE(WaitUntilThreadsAre(m_Threads));
    EXPECT_EQ(0U, m_Fake->OpenHandles());
}

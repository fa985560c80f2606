// SPDX-License-Identifier: MIT
//
// The machine's own events, more than the adapter's socket holds. No device is opened.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <memory>
#include <stdexcept>

#include "KOVASMgrLog.h"
#include "tests/adapters/adapter_under_test.h"
#include "tests/adapters/notice_recorder.h"
#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"

namespace {

const char* const kUevent = "/sys/class/tty/console/uevent";
constexpr unsigned kNobody = 65534;

// What only root may: makes the kernel send events, each time it is told to.
class Flood {
  public:
    Flood() {
        int ends[2];
        if (pipe(ends) != 0) {
            throw std::runtime_error("no pipe");
        }
        m_Child = fork();
        if (m_Child == 0) {
            close(ends[1]);
            Serve(ends[0]);
        }
        close(ends[0]);
        m_Command = ends[1];
    }
    ~Flood() {
        close(m_Command);
        waitpid(m_Child, nullptr, 0);
    }
    Flood(const Flood&) = delete;
    Flood& operator=(const Flood&) = delete;

    /// Returns while it is still going on; told again meanwhile it does no more.
    void Send() const { ASSERT_EQ(1, write(m_Command, "!", 1)); }

  private:
    [[noreturn]] static void Serve(int command) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::ofstream file(kUevent);
        char commands[4096];
        while (read(command, commands, sizeof commands) > 0) {
            for (int i = 0; i < 1000; ++i) {
                file << "change" << std::flush;
            }
        }
        _exit(0);
    }

    pid_t m_Child = -1;
    int m_Command = -1;
};

// Makes the adapter's sockets for events hold next to nothing. @return how many there are
int ShrinkEventSockets() {
    int count = 0;
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        int domain = 0;
        socklen_t length = sizeof domain;
        if (getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &length) == 0 &&
            domain == AF_NETLINK) {
            const int size = 1; // the kernel takes its least
            setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
            ++count;
        }
    }
    return count;
}

// A flood and its end, with the adapter's events from the kernel.
class KernelEvents : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) {
            GTEST_SKIP() << "only root can make the kernel send events";
        }
        if (!std::ofstream(kUevent)) {
            GTEST_SKIP() << kUevent << " cannot be written";
        }
        setenv("OSADAPT_EVENTS", "kernel", 1);
        KOVASMGR_LOG_INIT(m_Scratch.LogDirectory().c_str());
    }

    void ExpectLossIsSurvived(const Flood& flood) {
        const AdapterUnderTest& adapter = *m_Adapter;
        NoticeRecorder recorder(adapter);
        const std::string before = adapter.DevicesText();
        ASSERT_EQ(OS_ADAPT_OK, adapter.Register(NoticeRecorder::OnNotice));
        ASSERT_GE(ShrinkEventSockets(), 1);
        EXPECT_TRUE(WaitUntil([&] {
            flood.Send();
            return CountOf(LogText("log/KOVASMgr.log"), "lost") > 0;
        }));
        EXPECT_EQ(before, adapter.DevicesText());
        EXPECT_EQ(OS_ADAPT_OK, adapter.UnRegister(NoticeRecorder::OnNotice));
        EXPECT_TRUE(recorder.Notices().empty());
    }

    const ScratchDirectory m_Scratch;
    std::unique_ptr<AdapterUnderTest> m_Adapter =
        std::make_unique<AdapterUnderTest>(KOVASMGR_LINUX_ADAPTER);
};

} // namespace

TEST_F(KernelEvents, ThatWereLostAreSurvivedByRoot) {
    const Flood flood;
    ExpectLossIsSurvived(flood);
}

// Who may not enlarge the socket is who loses events.
TEST_F(KernelEvents, ThatWereLostAreSurvivedByAUser) {
    const Flood flood;
    for (const char* const path : {".", "log", "log/KOVASMgr.log"}) {
        ASSERT_EQ(0, chown(path, kNobody, kNobody));
    }
    ASSERT_EQ(0, setresgid(kNobody, kNobody, kNobody));
    ASSERT_EQ(0, setresuid(kNobody, kNobody, kNobody));
    ExpectLossIsSurvived(flood);
}

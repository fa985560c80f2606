// SPDX-License-Identifier: MIT
// Events that the kernel could not deliver: an ordinary user's buffer is small.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <functional>
#include <stdexcept>

#include "tests/harness/wait_until.h"
#include "tests/real_kernel/guest/far_terminal.h"
#include "tests/real_kernel/guest/gadget.h"
#include "tests/real_kernel/guest/guest_host.h"
#include "tests/real_kernel/guest/inbox.h"
#include "tests/real_kernel/guest/kernel_file.h"
#include "tests/real_kernel/guest/notices.h"
#include "tests/real_kernel/guest/user.h"

namespace {

constexpr int kEvents = 4000; // many more than the buffer holds

/// A process that stops this one while it does something, when it is let.
class Meanwhile {
  public:
    explicit Meanwhile(const std::function<void()>& action) {
        if (pipe(m_Go.data()) != 0 || (m_Process = fork()) < 0) {
            throw std::runtime_error("no process");
        }
        if (m_Process == 0) {
            Run(action);
        }
    }
    ~Meanwhile() {
        close(m_Go[0]);
        close(m_Go[1]);
    }
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;

    /// @return whether the action ended without an exception
    bool Let() const {
        int status = -1;
        return write(m_Go[1], "g", 1) == 1 && waitpid(m_Process, &status, 0) == m_Process &&
               status == 0;
    }

  private:
    [[noreturn]] void Run(const std::function<void()>& action) const {
        char byte = 0;
        int status = read(m_Go[0], &byte, 1) == 1 ? 0 : 1;
        kill(getppid(), SIGSTOP);
        try {
            action();
        } catch (const std::exception&) {
            status = 1;
        }
        kill(getppid(), SIGCONT);
        _exit(status);
    }

    std::array<int, 2> m_Go{};
    pid_t m_Process = -1;
};

using WithoutUdevLostEvents = GuestHost;

} // namespace

TEST_F(WithoutUdevLostEvents, AreMadeUpForAndNeighboursKeepWorking) {
    Gadget neighbour(0);
    neighbour.Texts("Acme", "Neighbour", "N1").AddAcmPorts(1);
    FarTerminal far(neighbour.FarNode());
    neighbour.PlugIn();
    ASSERT_TRUE(WaitUntil([] { return std::filesystem::exists("/dev/ttyACM0"); }));
    Gadget first(1);
    first.Texts("Acme", "First", "A1").AddAcmPorts(1).PlugIn();
    ASSERT_TRUE(WaitUntil([] { return std::filesystem::exists("/dev/ttyACM1"); }));
    Gadget second(2);
    second.Texts("Acme", "Second", "B1").AddAcmPorts(2);
    const Meanwhile meanwhile([&] {
        for (int i = 0; i < kEvents; ++i) {
            WriteKernelFile("/sys/class/tty/ttyS1/uevent", "change");
        }
        first.PullOut();
        WaitUntil([] { return !std::filesystem::exists("/dev/ttyACM1"); });
        second.PlugIn();
        WaitUntil([] { return std::filesystem::exists("/dev/ttyACM2"); });
    });
    {
        const OrdinaryUser user({});
        Start();
    }
    const Port kept = WaitFor("Neighbour N1").ports.at(0);
    const Inbox inbox(0, kept.id);
    Open(kept);
    WaitFor("First A1");
    notices::Clear();
    ASSERT_TRUE(meanwhile.Let());
    WaitFor("Second B1");
    EXPECT_TRUE(WaitUntil([] { return Find("Second B1")->ports.size() == 2; }));
    EXPECT_FALSE(Find("First A1").has_value());
    EXPECT_TRUE(WaitUntil([] { return notices::Signs().size() >= 2; }));
    EXPECT_EQ("-+", notices::Signs().substr(0, 2)) << notices::Signs();
    EXPECT_NE(std::string::npos, LogText().find("lost")) << LogText();
    far.Send("still here");
    EXPECT_TRUE(inbox.WaitFor("still here")) << inbox.Received();
}

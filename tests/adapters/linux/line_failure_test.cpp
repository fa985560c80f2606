// SPDX-License-Identifier: MIT
//
// The sentence that says why a port did not open and what to do.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "adapters/linux/open_failure.h"
#include "adapters/linux/serial_port.h"
#include "tests/adapters/descriptors_used_up.h"
#include "tests/adapters/linux/as_user.h"
#include "tests/adapters/linux/pty_pair.h"
#include "tests/harness/scratch_directory.h"

namespace {

constexpr gid_t kOtherGroup = 20;

std::string Refusal(const PortFacts& facts) {
    try {
        SerialPort::Open(facts, LineSettings());
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "opened";
}

// Another program that has a port open.
class Holder {
  public:
    enum class Way { Locked, Exclusive };

    Holder(const std::string& node, const std::string& name, Way way) {
        int ready[2];
        if (pipe2(ready, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        m_Process = fork();
        if (m_Process == 0) {
            Hold(node, name, way, ready[1]);
        }
        close(ready[1]);
        char byte = 0;
        EXPECT_EQ(1, read(ready[0], &byte, 1));
        close(ready[0]);
    }
    ~Holder() {
        kill(m_Process, SIGKILL);
        waitpid(m_Process, nullptr, 0);
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    std::string Process() const { return std::to_string(m_Process); }

  private:
    [[noreturn]] static void Hold(const std::string& node, const std::string& name, Way way,
                                  int ready) {
        prctl(PR_SET_NAME, name.c_str());
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int port = open(node.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const bool isHeld =
            way == Way::Locked ? flock(port, LOCK_EX | LOCK_NB) == 0 : ioctl(port, TIOCEXCL) == 0;
        if (!isHeld || write(ready, "x", 1) != 1) {
            _exit(1);
        }
        while (true) {
            pause();
        }
    }

    pid_t m_Process = -1;
};

class LineFailure : public testing::Test {
  protected:
    // Gives the node to root and a group.
    void GiveTo(gid_t group, mode_t mode) const {
        ASSERT_EQ(0, chown(m_Pty.Node().c_str(), 0, group));
        ASSERT_EQ(0, chmod(m_Pty.Node().c_str(), mode));
    }

    std::string RefusalAsUser() const {
        return AsUser([this] { return Refusal(m_Pty.Facts()); });
    }

    PtyPair m_Pty;
};

std::string NameOfGroup(gid_t group) {
    const struct group* found = getgrgid(group);
    return found == nullptr ? std::to_string(group) : found->gr_name;
}

} // namespace

TEST_F(LineFailure, BusyNamesTheProgramThatLockedThePort) {
    const Holder holder(m_Pty.Node(), "terminal one", Holder::Way::Locked);
    EXPECT_EQ("it is in use by terminal one (process " + holder.Process() +
                  "); close it there first",
              Refusal(m_Pty.Facts()));
}

TEST_F(LineFailure, BusyNamesTheProgramThatHasThePortForItself) {
    const Holder holder(m_Pty.Node(), "bad\n\x1b[2J%s", Holder::Way::Exclusive);
    EXPECT_EQ("it is in use by bad??[2J%s (process " + holder.Process() + "); close it there first",
              Refusal(m_Pty.Facts()));
}

TEST_F(LineFailure, BusyReadsWellWhereTheHolderCannotBeSeen) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs a process of another user: run as root";
    }
    GiveTo(kOtherGroup, 0666);
    const Holder holder(m_Pty.Node(), "hidden", Holder::Way::Locked);
    EXPECT_EQ("it is in use by another program, which this user cannot look into; 'sudo fuser -v " +
                  m_Pty.Node() + "' names it",
              RefusalAsUser());
}

TEST_F(LineFailure, PermissionNamesTheGroupAndTheCommand) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs a node of another user: run as root";
    }
    GiveTo(kOtherGroup, 0660);
    const std::string group = NameOfGroup(kOtherGroup);
    EXPECT_EQ("permission denied: " + m_Pty.Node() + " belongs to group '" + group +
                  "'; run 'sudo usermod -aG " + group + " nobody' and log in again",
              RefusalAsUser());
}

TEST_F(LineFailure, PermissionThatNoGroupHasAsksForARule) {
    const std::string expected = "permission denied: an access rule is missing that gives " +
                                 m_Pty.Node() + " to a group of yours";
    ASSERT_EQ(0, chmod(m_Pty.Node().c_str(), 0));
    EXPECT_EQ(expected, RefusalAsUser().substr(0, expected.size()));
    if (geteuid() == 0) {
        GiveTo(kOtherGroup, 0640);
        EXPECT_EQ(expected, RefusalAsUser().substr(0, expected.size()));
        GiveTo(0, 0660); // root's group is no answer
        EXPECT_EQ(expected, RefusalAsUser().substr(0, expected.size()));
    }
}

TEST_F(LineFailure, PermissionThatTheGroupHasAlreadyLooksForOtherReasons) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "needs a node of another user: run as root";
    }
    GiveTo(65534, 0660);
    const std::string text =
        AsUser([this] { return OpenFailureText(m_Pty.Node(), m_Pty.Facts().number, EACCES); });
    EXPECT_EQ("permission denied, although group 'nogroup' may open " + m_Pty.Node(),
              text.substr(0, text.find(';')));
}

TEST_F(LineFailure, GoneIsToldForANodeThatIsNotThere) {
    PortFacts facts;
    facts.node = "/dev/ttyUSB99";
    EXPECT_EQ("the device is gone; open the port again when it is back", Refusal(facts));
}

TEST_F(LineFailure, GoneIsToldForANodeThatBelongsToAnotherDevice) {
    PortFacts facts = m_Pty.Facts();
    facts.number += 1;
    EXPECT_EQ("the device is gone; open the port again when it is back", Refusal(facts));
    facts.number = 0;
    EXPECT_EQ("opened", Refusal(facts));
}

TEST_F(LineFailure, GoneIsToldForEveryErrorOfADeviceThatIsNotThere) {
    for (const int error : {ENOENT, ENODEV, ENXIO, EIO}) {
        EXPECT_EQ(GoneText(), OpenFailureText("/dev/ttyUSB0", 0, error));
    }
}

TEST_F(LineFailure, NotATerminalIsTold) {
    const ScratchDirectory scratch;
    std::ofstream(scratch.Path() + "/file") << "text";
    PortFacts facts;
    for (const std::string& node : {scratch.Path() + "/file", std::string("/dev/null")}) {
        facts.node = node;
        EXPECT_EQ("it is not a terminal; take the node of a serial port", Refusal(facts));
    }
}

TEST_F(LineFailure, DescriptorsUsedUpAreTold) {
    const PortFacts facts = m_Pty.Facts();
    // A sanitizer needs descriptors when it meets the exceptions for the first time.
    ASSERT_EQ(GoneText(), Refusal(PortFacts()));
    const DescriptorsUsedUp none;
    EXPECT_EQ("Too many open files (errno 24); the host has too many descriptors open, raise its "
              "limit (ulimit -n)",
              Refusal(facts));
}

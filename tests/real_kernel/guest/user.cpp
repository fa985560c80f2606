// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/user.h"

#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace {

constexpr uid_t kUser = 1000;

// A process that changes its user may not look at itself any more, unless it says so.
void StayVisible() { prctl(PR_SET_DUMPABLE, 1, 0, 0, 0); }

void Hold(const std::string& node, int told) {
    prctl(PR_SET_NAME, "holder", 0, 0, 0);
    const int terminal = open(node.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    const bool holds =
        terminal >= 0 && flock(terminal, LOCK_EX | LOCK_NB) == 0 && ioctl(terminal, TIOCEXCL) == 0;
    if (!holds || write(told, "h", 1) != 1) {
        _exit(1);
    }
    while (true) {
        pause();
    }
}

} // namespace

OrdinaryUser::OrdinaryUser(const std::vector<gid_t>& groups) {
    if (setgroups(groups.size(), groups.data()) != 0 || setresgid(kUser, kUser, 0) != 0 ||
        setresuid(kUser, kUser, 0) != 0) {
        throw std::runtime_error("cannot become an ordinary user");
    }
    StayVisible();
}

OrdinaryUser::~OrdinaryUser() {
    if (setresuid(0, 0, 0) == 0 && setresgid(0, 0, 0) == 0 && setgroups(0, nullptr) == 0) {
        StayVisible();
    }
}

Holder::Holder(const std::string& node) {
    std::array<int, 2> told{};
    if (pipe(told.data()) != 0 || (m_Process = fork()) < 0) {
        throw std::runtime_error("no process to hold " + node);
    }
    if (m_Process == 0) {
        Hold(node, told[1]);
    }
    close(told[1]);
    char byte = 0;
    const bool holds = read(told[0], &byte, 1) == 1;
    close(told[0]);
    if (!holds) {
        throw std::runtime_error("nobody holds " + node);
    }
}

Holder::~Holder() {
    kill(m_Process, SIGKILL);
    waitpid(m_Process, nullptr, 0);
}

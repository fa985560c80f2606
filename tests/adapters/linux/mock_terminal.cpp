// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>

#include "tests/harness/wait_until.h"

namespace {

bool Wait(int terminal, short events) {
    pollfd entry{terminal, events, 0};
    return poll(&entry, 1, 10000) > 0;
}

// What is sent before anybody opens the near end is to arrive as it is.
void MakeRaw(int terminal) {
    termios settings{};
    tcgetattr(terminal, &settings);
    cfmakeraw(&settings);
    tcsetattr(terminal, TCSANOW, &settings);
}

} // namespace

MockTerminal::MockTerminal() : m_FarEnd(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    char name[64];
    if (m_FarEnd < 0 || grantpt(m_FarEnd) != 0 || unlockpt(m_FarEnd) != 0 ||
        ptsname_r(m_FarEnd, name, sizeof name) != 0) {
        throw std::runtime_error("no pseudo-terminal");
    }
    m_NearEnd = name;
    MakeRaw(m_FarEnd);
}

MockTerminal::~MockTerminal() { close(m_FarEnd); }

bool MockTerminal::Send(const std::string& bytes) const {
    size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = write(m_FarEnd, bytes.data() + sent, bytes.size() - sent);
        if (count > 0) {
            sent += static_cast<size_t>(count);
        } else if (errno != EAGAIN || !Wait(m_FarEnd, POLLOUT)) {
            return false;
        }
    }
    return true;
}

std::string MockTerminal::Receive(size_t count) const {
    std::string bytes;
    char buffer[4096];
    // While nobody has the near end open, reading fails.
    WaitUntil([&] {
        const size_t rest = std::min(count - bytes.size(), sizeof buffer);
        const ssize_t got = read(m_FarEnd, buffer, rest);
        bytes.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
        return bytes.size() == count;
    });
    return bytes;
}

termios MockTerminal::Settings() const {
    termios settings{};
    tcgetattr(m_FarEnd, &settings);
    return settings;
}

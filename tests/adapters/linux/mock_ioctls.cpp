// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/mock_ioctls.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace {

// The messages of the preloaded library and their answers.
struct Message {
    unsigned long kind = 0;
    unsigned long values[2] = {};
};
constexpr unsigned long kResult = 2; // with the result and errno of what was done
constexpr unsigned long kDone = 3;   // returns with the same values
constexpr unsigned long kDoIt = 4;   // on the terminal itself

int Listen(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, SOMAXCONN) != 0) {
        throw std::runtime_error("cannot listen on " + path);
    }
    return listener;
}

// @return false at the end of the connection
bool Answer(int connection) {
    Message message;
    if (recv(connection, &message, sizeof message, 0) != sizeof message) {
        return false;
    }
    message.kind = message.kind == kResult ? kDone : kDoIt;
    return send(connection, &message, sizeof message, MSG_NOSIGNAL) == sizeof message;
}

} // namespace

MockIoctls::MockIoctls(const std::string& root)
    : m_Listener(Listen(root + "/ioctl/_default")),
      m_End(eventfd(0, EFD_CLOEXEC)), m_Entries{{m_End, POLLIN, 0}, {m_Listener, POLLIN, 0}},
      m_Thread([this] { Serve(); }) {}

MockIoctls::~MockIoctls() {
    eventfd_write(m_End, 1);
    m_Thread.join();
    for (const pollfd& entry : m_Entries) {
        close(entry.fd);
    }
}

void MockIoctls::Accept() {
    m_Entries.push_back({accept4(m_Listener, nullptr, nullptr, SOCK_CLOEXEC), POLLIN, 0});
}

void MockIoctls::Serve() {
    while (poll(m_Entries.data(), m_Entries.size(), -1) > 0 && m_Entries[0].revents == 0) {
        const bool isCalled = m_Entries[1].revents != 0;
        const auto ended =
            std::remove_if(m_Entries.begin() + 2, m_Entries.end(), [](const pollfd& entry) {
                const bool isOver = entry.revents != 0 && !Answer(entry.fd);
                return isOver && close(entry.fd) == 0;
            });
        m_Entries.erase(ended, m_Entries.end());
        if (isCalled) {
            Accept();
        }
    }
}

// SPDX-License-Identifier: MIT
#include "tests/adapters/far_program.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace {

constexpr int kBoundMs = 10000;

bool Wait(int terminal, short events) {
    pollfd entry{terminal, events, 0};
    return poll(&entry, 1, kBoundMs) > 0;
}

} // namespace

FarProgram::FarProgram(const std::string& link)
    : m_Terminal(open(link.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    if (m_Terminal < 0) {
        throw std::runtime_error(link + ": " + std::strerror(errno));
    }
}

FarProgram::~FarProgram() { close(m_Terminal); }

bool FarProgram::Send(const std::string& bytes) const {
    size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = write(m_Terminal, bytes.data() + sent, bytes.size() - sent);
        if (count > 0) {
            sent += static_cast<size_t>(count);
        } else if (errno != EAGAIN || !Wait(m_Terminal, POLLOUT)) {
            return false;
        }
    }
    return true;
}

std::string FarProgram::Receive(size_t count) const {
    std::string bytes;
    char buffer[4096];
    while (bytes.size() < count && Wait(m_Terminal, POLLIN)) {
        const ssize_t got = read(m_Terminal, buffer, sizeof buffer);
        if (got <= 0 && errno != EAGAIN) {
            return bytes;
        }
        bytes.append(buffer, got > 0 ? static_cast<size_t>(got) : 0);
    }
    return bytes;
}

bool FarProgram::IsHungUp() const {
    pollfd entry{m_Terminal, 0, 0};
    return poll(&entry, 1, kBoundMs) > 0 && (entry.revents & POLLHUP) != 0;
}

// SPDX-License-Identifier: MIT
#include "tests/adapters/linux/pty_pair.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/harness/wait_until.h"

PtyPair::PtyPair() : m_Master(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    char path[64] = "";
    if (m_Master < 0 || grantpt(m_Master) != 0 || unlockpt(m_Master) != 0 ||
        ptsname_r(m_Master, path, sizeof path) != 0) {
        throw std::runtime_error("no pseudo-terminal");
    }
    m_Node = path;
}

PtyPair::~PtyPair() { PullOut(); }

PortFacts PtyPair::Facts() const {
    struct stat info {};
    if (stat(m_Node.c_str(), &info) != 0) {
        throw std::runtime_error("no node");
    }
    PortFacts facts;
    facts.node = m_Node;
    facts.number = info.st_rdev;
    return facts;
}

bool PtyPair::Send(const std::string& bytes) const {
    size_t sent = 0;
    return WaitUntil([&] {
        const ssize_t count = write(m_Master, bytes.data() + sent, bytes.size() - sent);
        sent += count > 0 ? static_cast<size_t>(count) : 0;
        return sent == bytes.size();
    });
}

std::string PtyPair::Receive(size_t size) const {
    std::string bytes;
    WaitUntil(
        [&] {
            char buffer[4096];
            const ssize_t count = read(m_Master, buffer, sizeof buffer);
            bytes.append(buffer, count > 0 ? static_cast<size_t>(count) : 0);
            return bytes.size() >= size;
        },
        std::chrono::seconds(2));
    return bytes;
}

termios PtyPair::Settings() const {
    termios settings{};
    if (tcgetattr(m_Master, &settings) != 0) {
        throw std::runtime_error("no settings");
    }
    return settings;
}

void PtyPair::Set(const termios& settings) const { tcsetattr(m_Master, TCSANOW, &settings); }

void PtyPair::PullOut() {
    if (m_Master >= 0) {
        close(m_Master);
    }
    m_Master = -1;
}

// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/far_terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

#include "tests/harness/wait_until.h"

namespace {

constexpr int kLookMilliseconds = 20;

} // namespace

int OpenRaw(const std::string& node) {
    const int terminal = open(node.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios settings{};
    if (terminal < 0 || tcgetattr(terminal, &settings) != 0) {
        throw std::runtime_error(node + ": " + std::strerror(errno));
    }
    cfmakeraw(&settings);
    tcsetattr(terminal, TCSANOW, &settings);
    return terminal;
}

FarTerminal::FarTerminal(const std::string& node)
    : m_Terminal(OpenRaw(node)), m_Thread([this] { Take(); }) {}

FarTerminal::~FarTerminal() {
    m_Ending = true;
    m_Thread.join();
    tcflush(m_Terminal, TCIOFLUSH);
    close(m_Terminal);
}

void FarTerminal::Send(const std::string& bytes) const {
    size_t sent = 0;
    const auto step = [&] {
        const ssize_t count = write(m_Terminal, bytes.data() + sent, bytes.size() - sent);
        sent += count > 0 ? static_cast<size_t>(count) : 0;
        return sent == bytes.size();
    };
    WaitUntil(step, std::chrono::seconds(30));
}

std::string FarTerminal::Received() const {
    const std::lock_guard<std::mutex> lock(m_Mutex);
    return m_Received;
}

bool FarTerminal::WaitForSize(std::size_t size) const {
    return WaitUntil([&] { return Received().size() >= size; }, std::chrono::seconds(30));
}

void FarTerminal::Take() {
    std::array<char, 4096> buffer{};
    while (!m_Ending) {
        pollfd waiting{m_Terminal, POLLIN, 0};
        poll(&waiting, 1, kLookMilliseconds);
        const ssize_t count = read(m_Terminal, buffer.data(), buffer.size());
        if (count > 0) {
            const std::lock_guard<std::mutex> lock(m_Mutex);
            m_Received.append(buffer.data(), static_cast<size_t>(count));
        }
    }
}

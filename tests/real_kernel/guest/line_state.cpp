// SPDX-License-Identifier: MIT
#include "tests/real_kernel/guest/line_state.h"

#include <asm/ioctls.h>
#include <asm/termbits.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace {

int DescriptorOf(const std::string& node) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code ignored;
        if (std::filesystem::read_symlink(entry.path(), ignored) == node) {
            return std::stoi(entry.path().filename());
        }
    }
    return -1;
}

} // namespace

LineState::LineState(int terminal) : m_Terminal(terminal) {
    if (m_Terminal < 0) {
        throw std::runtime_error(std::string("no terminal: ") + std::strerror(errno));
    }
}

LineState LineState::OfThisProcess(const std::string& node) {
    return LineState(dup(DescriptorOf(node)));
}

LineState LineState::Beside(const std::string& node) {
    return LineState(open(node.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK));
}

LineState::~LineState() { close(m_Terminal); }

unsigned LineState::BaudRate() const {
    termios2 settings{};
    ioctl(m_Terminal, TCGETS2, &settings);
    return settings.c_ispeed == settings.c_ospeed ? settings.c_ospeed : 0;
}

std::string LineState::ModemLines() const {
    int lines = 0;
    ioctl(m_Terminal, TIOCMGET, &lines);
    const std::string dtr = (lines & TIOCM_DTR) != 0 ? "DTR" : "";
    const std::string rts = (lines & TIOCM_RTS) != 0 ? "RTS" : "";
    return dtr.empty() || rts.empty() ? dtr + rts : dtr + " " + rts;
}

void LineState::SetOldFashioned() const {
    termios2 settings{};
    ioctl(m_Terminal, TCGETS2, &settings);
    settings.c_cflag &= ~static_cast<tcflag_t>(CBAUD | CSIZE);
    settings.c_cflag |= B9600 | CS7;
    settings.c_ispeed = 9600;
    settings.c_ospeed = 9600;
    ioctl(m_Terminal, TCSETS2, &settings);
}

std::string LineState::Stty() const {
    const std::string command = "stty -a 2>/dev/null <&" + std::to_string(m_Terminal);
    FILE* const output = popen(command.c_str(), "r");
    std::array<char, 4096> buffer{};
    const size_t size = fread(buffer.data(), 1, buffer.size(), output);
    pclose(output);
    std::string text = " " + std::string(buffer.data(), size);
    for (char& character : text) {
        character = character == '\n' || character == ';' ? ' ' : character;
    }
    return text;
}

// SPDX-License-Identifier: MIT
#include <poll.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "adapters/linux/open_failure.h"
#include "adapters/linux/terminal_settings.h"

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void Refuse(int error) {
    if (IsGone(error)) {
        throw std::system_error(error, std::generic_category());
    }
    throw std::runtime_error("the driver refused a break");
}

class BreakCondition {
  public:
    explicit BreakCondition(int terminal) : m_Terminal(terminal) {
        if (ioctl(terminal, TIOCSBRK) != 0) {
            Refuse(errno);
        }
    }
    ~BreakCondition() { ioctl(m_Terminal, TIOCCBRK); }
    BreakCondition(const BreakCondition&) = delete;
    BreakCondition& operator=(const BreakCondition&) = delete;

  private:
    int m_Terminal;
};

// Nothing but a hang-up ends the waiting early.
bool IsHungUpWithin(int terminal, std::chrono::milliseconds time) {
    const auto deadline = Clock::now() + time;
    for (auto left = time; left.count() > 0;
         left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now())) {
        pollfd entry{terminal, 0, 0};
        if (poll(&entry, 1, static_cast<int>(left.count())) > 0) {
            return true;
        }
    }
    return false;
}

} // namespace

void SendBreak(int terminal, std::chrono::milliseconds time) {
    const BreakCondition breaking(terminal);
    if (IsHungUpWithin(terminal, time)) {
        throw std::system_error(EIO, std::generic_category());
    }
}

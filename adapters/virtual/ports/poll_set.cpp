// SPDX-License-Identifier: MIT
#include "adapters/virtual/ports/poll_set.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr std::chrono::milliseconds kLongestWait{60000};

} // namespace

size_t PollSet::Add(int descriptor, short events) {
    m_Entries.push_back(pollfd{descriptor, events, 0});
    return m_Entries.size() - 1;
}

void PollSet::WakeAt(std::optional<Instant> when) {
    if (when) {
        m_WakeAt = std::min(m_WakeAt.value_or(*when), *when);
    }
}

bool PollSet::Wait() {
    auto wait = kLongestWait;
    if (m_WakeAt) {
        const auto left = *m_WakeAt - std::chrono::steady_clock::now();
        wait = std::chrono::ceil<std::chrono::milliseconds>(left);
    }
    const auto bounded = std::clamp(wait, std::chrono::milliseconds(0), kLongestWait);
    if (poll(m_Entries.data(), m_Entries.size(), static_cast<int>(bounded.count())) >= 0) {
        return true;
    }
    for (pollfd& entry : m_Entries) {
        entry.revents = 0;
    }
    return errno == EINTR;
}

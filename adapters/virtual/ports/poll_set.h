// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_POLL_SET_H
#define KOVASMGR_ADAPTERS_VIRTUAL_POLL_SET_H

#include <poll.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

/// What one round of a loop waits for.
class PollSet {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    /// @param events  POLLIN, POLLOUT or 0 (only errors and hang-ups are told then)
    /// @return where Seen finds the answer.
    size_t Add(int descriptor, short events);

    /// Ends the waiting at this time at the latest; nothing changes nothing.
    void WakeAt(std::optional<Instant> when);

    /// Waits once.
    /// @return false when waiting is not possible now; errno tells why, and nothing is seen.
    bool Wait();

    short Seen(size_t place) const { return m_Entries[place].revents; }

  private:
    std::vector<pollfd> m_Entries;
    std::optional<Instant> m_WakeAt;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_READINESS_H
#define KOVASMGR_ADAPTERS_READINESS_H

#include <sys/epoll.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "adapters/shared/unique_fd.h"

/// Knows which of many descriptors have something to read, hung-up and broken ones included, so
/// that a host which asks each of them a hundred times a second costs one system call a sweep: the
/// kernel is asked about all of them together, and its answer serves each descriptor once, within a
/// millisecond.
///
/// Holds a descriptor of its own, and memory, while it watches any.
///
/// Threads: none of its own and no lock; HandleTable guards it.
class Readiness {
  public:
    using Clock = std::chrono::steady_clock;

    /// How old an answer may be: so much longer than without it, at most, does data wait.
    static constexpr std::chrono::milliseconds kFresh{1};

    /// Watches an open descriptor under a new handle, greater than any before. One that cannot be
    /// watched is never idle.
    void Watch(int handle, int descriptor);

    /// To be called while the descriptor is open: the kernel watches what is open, however it was
    /// opened, and would go on with a duplicate.
    void Forget(int handle);

    /// Whether there is surely nothing to read. A descriptor that the last answer did not know yet
    /// is not idle.
    bool IsIdle(int handle) {
        const size_t place = Place(handle);
        if (place == m_Watched.size()) {
            return false;
        }
        Watched& watched = m_Watched[place];
        m_NextPlace = place + 1;
        const Clock::time_point now = Clock::now();
        if (watched.askedIn == m_Round || now - m_RoundStart > kFresh) {
            StartRound(now);
        }
        watched.askedIn = m_Round;
        return watched.readyIn != m_Round;
    }

  private:
    struct Watched {
        int handle;
        int descriptor;
        uint32_t askedIn; // the last round in which the host asked
        uint32_t readyIn; // the last round in which it was ready
    };

    size_t Place(int handle) const {
        if (m_NextPlace < m_Watched.size() && m_Watched[m_NextPlace].handle == handle) {
            return m_NextPlace;
        }
        return FindPlace(handle);
    }

    size_t FindPlace(int handle) const;
    void LeaveParentsSet();
    bool Enter(int handle, int descriptor);
    void EndIfUnused();
    void StartRound(Clock::time_point now);

    UniqueFd m_Set;                    // an epoll set
    pid_t m_Owner = 0;                 // the process that made it
    std::vector<Watched> m_Watched;    // by ascending handle, close together for the cache's sake
    size_t m_NextPlace = 0;            // behind the one that was asked last: hosts ask in turn
    std::vector<epoll_event> m_Events; // room for an answer about all of them
    uint32_t m_Round = 1;              // counts the kernel's answers
    Clock::time_point m_RoundStart{};
};

#endif

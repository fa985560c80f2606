// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_READINESS_H
#define KOVASMGR_ADAPTERS_READINESS_H

#include <sys/epoll.h>
#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <mutex>
#include <vector>

#include "adapters/shared/unique_fd.h"

/// Knows which of many descriptors have something to read, hung-up and broken ones included, so
/// that a host which asks each of them a hundred times a second costs one system call a sweep: the
/// kernel is asked about all of them together, and its answer serves each descriptor once, until
/// the kernel's clock ticks (1 to 10 ms). So much longer than without it, at most, does data wait.
///
/// Holds a descriptor of its own while it watches any.
///
/// Threads: any. Asking takes no lock as long as the last answer serves; it is meant for one thread
/// at a time, and of two that ask at once one may be answered a round late.
class Readiness {
  public:
    /// Handles that are so far apart have one place between them: the later one is never idle.
    static constexpr int kPlaces = 4096;

    /// Watches an open descriptor under a new handle, which is positive. One that cannot be watched
    /// is never idle.
    void Watch(int handle, int descriptor);

    /// To be called while the descriptor is open: the kernel watches what is open, however it was
    /// opened, and would go on with a duplicate.
    void Forget(int handle);

    /// Whether there is surely nothing to read. A descriptor that the last answer did not know yet
    /// is not idle.
    bool IsIdle(int handle) {
        Place& place = PlaceOf(handle);
        if (place.handle.load(std::memory_order_acquire) != handle || handle == kNoHandle) {
            return false;
        }
        // In the order opposite to StartRound's: a new start comes with its round.
        if (m_RoundStart.load(std::memory_order_acquire) != Tick() ||
            place.state == Asked(m_Round.load(std::memory_order_acquire))) {
            StartRound();
        }
        return TakeAnswer(place);
    }

  private:
    static constexpr int kNoHandle = 0;

    struct Place {
        std::atomic<int> handle{kNoHandle};
        std::atomic<uint32_t> state{0};
        int descriptor = -1;
    };

    // What is known of a descriptor, and since which round. Older than the last one: it was idle
    // there.
    static uint32_t Asked(uint32_t round) { return 2 * round; }
    static uint32_t Ready(uint32_t round) { return 2 * round + 1; }

    // Many times cheaper than the exact time.
    static int64_t Tick() {
        timespec now{};
        clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
        return now.tv_sec * int64_t{1000000000} + now.tv_nsec;
    }

    Place& PlaceOf(int handle) { return m_Places[static_cast<unsigned>(handle) % kPlaces]; }

    bool TakeAnswer(Place& place) {
        const uint32_t round = m_Round.load(std::memory_order_acquire);
        const bool isIdle = place.state != Ready(round);
        place.state.store(Asked(round), std::memory_order_relaxed);
        return isIdle;
    }

    void LeaveParentsSet();
    bool Add(int handle, int descriptor);
    void EndIfUnused();
    void StartRound();

    std::array<Place, kPlaces> m_Places; // by handle
    std::atomic<uint32_t> m_Round{1};    // counts the kernel's answers
    std::atomic<int64_t> m_RoundStart{0};

    std::mutex m_Mutex;                // guards the rest, and is held while the above is changed
    UniqueFd m_Set;                    // an epoll set
    pid_t m_Owner = 0;                 // the process that made it
    std::vector<epoll_event> m_Events; // room for an answer about all that are watched
};

#endif

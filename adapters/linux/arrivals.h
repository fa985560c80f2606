// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_LINUX_ARRIVALS_H
#define KOVASMGR_ADAPTERS_LINUX_ARRIVALS_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "adapters/linux/port_facts.h"

/// Ports that are on their way: announced, but not ready to be told of.
///
/// The kernel announces the ports of a device at once; udevd then works on them in any order and
/// gives its word on each. The ports that have its word wait a little for the others of their
/// device, so that the device comes as a whole and in order.
///
/// Threads: none of its own and no lock; DeviceWatch guards it.
class Arrivals {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    /// So long an announced port waits for udevd before it is taken without.
    static constexpr std::chrono::milliseconds kPatience{3000};
    /// So long a complete port waits for others of its device. With the quiet time of the notices
    /// this stays below what one notice may take.
    static constexpr std::chrono::milliseconds kTogether{25};
    /// A port that cannot be read is looked at again after this.
    static constexpr std::chrono::milliseconds kLookAgain{20};

    struct Port {
        PortFacts facts;
        uint64_t sequence = 0; // the kernel's number of the event; 0: none is known
    };

    /// Ends the waiting of a port that was announced before.
    void Announce(const std::string& sysPath, uint64_t sequence, Instant now);

    /// The port is there, but could not be read. Keeps the end of its waiting.
    void LookAgain(const std::string& sysPath, uint64_t sequence, Instant now);

    void Complete(const PortFacts& facts, uint64_t sequence, Instant now);
    void Drop(const std::string& sysPath);

    /// Drops the ports that wait for others only.
    void DropComplete();

    /// The sequence number of the announcement of a port that waits.
    std::optional<uint64_t> SequenceOf(const std::string& sysPath) const;

    /// Whether a port that is waiting has been looked at for as long as it may.
    bool IsOutOfPatience(const std::string& sysPath, Instant now) const;

    /// Ports that are to be looked at without udevd's word, each once.
    std::vector<std::string> TakeOverdue(Instant now);

    /// Ports that are complete and wait for no other, in the order of their devices and interfaces.
    std::vector<Port> TakeReady(Instant now);

    /// When to ask again.
    std::optional<Instant> Due() const;

  private:
    struct Waiting {
        Port port;
        bool isComplete = false;
        Instant end;  // of the patience
        Instant look; // complete: no waiting for others after this; else: overdue then
    };

    bool IsReady(const Waiting& waiting, Instant now) const;

    std::map<std::string, Waiting> m_Ports; // by sysPath
};

#endif

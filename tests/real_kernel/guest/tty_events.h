// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_REAL_KERNEL_GUEST_TTY_EVENTS_H
#define KOVASMGR_TESTS_REAL_KERNEL_GUEST_TTY_EVENTS_H

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

/// Listens beside the adapter: when the kernel told of terminals, and when udev had done with them.
/// Passes over the far terminals of gadgets.
class TtyEvents {
  public:
    using Instant = std::chrono::steady_clock::time_point;

    struct Event {
        std::string source; // "kernel" or "udev"
        std::string action; // "add", "remove", ...
        std::string name;   // "ttyUSB0"
        unsigned long long sequence = 0;
        Instant when;
    };

    TtyEvents();
    ~TtyEvents();
    TtyEvents(const TtyEvents&) = delete;
    TtyEvents& operator=(const TtyEvents&) = delete;

    /// The latest event of this kind that came at `since` or later.
    std::optional<Event> Latest(const std::string& source, const std::string& action,
                                Instant since) const;

    /// How many groups the events of this kind come in, when a pause of `quiet` ends one.
    int Groups(const std::string& source, const std::string& action, Instant since,
               std::chrono::milliseconds quiet) const;

    /// "0 12 25 31 ms": when they came, from the first one on.
    std::string Timeline(const std::string& source, const std::string& action, Instant since) const;

    /// Waits for one; false after 10 s.
    bool WaitFor(const std::string& source, const std::string& action, Instant since) const;

  private:
    std::vector<Event> Select(const std::string& source, const std::string& action,
                              Instant since) const;
    void Listen();
    void Take(const Event& event);

    std::atomic<bool> m_Listening{false};
    std::atomic<bool> m_Ending{false};
    mutable std::mutex m_Mutex;
    std::vector<Event> m_Events;
    std::thread m_Thread;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_HANDLE_TABLE_H
#define KOVASMGR_ADAPTERS_HANDLE_TABLE_H

#include <array>
#include <atomic>
#include <climits>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "adapters/shared/open_terminal.h"
#include "adapters/shared/readiness.h"

/// The ports that the host holds open. Handles count upwards and are never given twice.
///
/// A terminal is shared with the calls that are inside it, and closed by the last one that lets it
/// go: nobody waits for a call, and no call finds its descriptor's number in other hands. The table
/// lets it go with no lock held.
///
/// Threads: any.
class HandleTable {
  public:
    using Terminal = std::shared_ptr<OpenTerminal>;

    enum class State { Unknown, Dead, Open };

    struct Found {
        State state = State::Unknown;
        Terminal terminal; // only with State::Open; stays open as long as this is held
    };

    /// Enters an open port. A handle that the port still has is dropped: whoever held it has
    /// forgotten it.
    /// @return the new handle, or -1 when the numbers have run out.
    int Add(const std::string& portName, Terminal terminal);

    Found Find(int handle);

    /// Runs a call on an open port's descriptor, which stays open meanwhile: at a fraction of what
    /// Find costs, for what never waits and throws nothing.
    /// @return false, and the call was not run, when the port is not open, another thread's call is
    ///         running, or the handle has no seat; Find knows more.
    template <typename Call> bool RunInside(int handle, Call call) {
        Seat& seat = SeatOf(handle);
        if (seat.isTaken.exchange(true)) {
            return false;
        }
        const bool isOpen = handle != kNoHandle && seat.handle == handle;
        if (isOpen) {
            call(seat.descriptor.load(std::memory_order_relaxed));
        }
        seat.isTaken.store(false, std::memory_order_release);
        LetLeaversGoIfAny();
        return isOpen;
    }

    /// The port's name, for messages; empty when there is no such handle.
    std::string PortName(int handle) const;

    /// The terminal that a port has open; null when it has none.
    Terminal FindPort(const std::string& portName) const;

    /// Whether the port is open and the kernel has said, a moment ago, that there is nothing to
    /// read. Made for being asked of all handles in turn: allocates, copies and locks nothing, and
    /// one system call serves them all. Closes what a call was still inside when it was let go.
    bool IsIdle(int handle) {
        LetLeaversGoIfAny();
        return m_Readiness.IsIdle(handle);
    }

    /// Removes a handle, dead or alive.
    /// @return false when there is no such handle.
    bool Remove(int handle);

    /// Removes what a port still has, as opening it anew does; for terminals that can be opened by
    /// one only.
    void RemovePort(const std::string& portName);

    /// Lets the terminal go at once; the handle stays known as a dead one.
    void Kill(int handle);
    void KillPort(const std::string& portName);
    void KillAll();

    /// @return true for the first call on a dead handle, and never again.
    bool TakeDeathNotice(int handle);

    /// @return true for the first call on a handle, and never again.
    bool TakeStallNotice(int handle);

    /// Removes everything; numbers are not given again all the same.
    void Clear();

  private:
    static constexpr int kNoHandle = 0;

    // Handles that are so far apart have one seat between them, and the later one none.
    static constexpr unsigned kSeats = 4096;

    // Whoever sits down and then sees its handle is inside; whoever takes the handle away and then
    // sees nobody may close. As each does the first before the second, they cannot miss each other.
    struct alignas(16) Seat { // within one line of the cache
        std::atomic<int> handle{kNoHandle};
        std::atomic<int> descriptor{-1};
        std::atomic<bool> isTaken{false};
    };

    // Splicing needs no memory: a terminal can always be let go.
    using Terminals = std::list<Terminal>;

    struct Entry {
        std::string portName;
        Terminals terminal; // one, or none: dead
        bool deathNoticed = false;
        bool stallNoticed = false;
    };

    using Entries = std::map<int, Entry>;

    Seat& SeatOf(int handle) { return m_Seats[static_cast<unsigned>(handle) % kSeats]; }

    void GiveSeat(int handle, int descriptor);
    bool TakeSeatAway(int handle);

    // Whoever leaves its seat may see too early that nobody waits for that: a processor may look
    // ahead of its own stores, and making it wait would cost as much as taking the seat. So every
    // asking looks as well: what was missed is let go by the host's next sweep, or its next call
    // when it has no port left to ask.
    void LetLeaversGoIfAny() {
        if (m_HasLeavers.load(std::memory_order_relaxed)) {
            LetLeaversGo();
        }
    }

    void LetLeaversGo();
    void SeeOff(Terminals& left);
    void Detach(Entries::value_type& entry, Terminals& detached);
    void DropPort(const std::string& portName, int except, Terminals& dropped);

    Readiness m_Readiness;                 // of the entries with a terminal
    std::atomic<bool> m_HasLeavers{false}; // or may have in a moment
    std::array<Seat, kSeats> m_Seats;

    mutable std::mutex m_Mutex; // guards everything below
    Entries m_Entries;
    Terminals m_Leavers; // let go while somebody was inside
    int m_LastHandle = 0;
};

#endif

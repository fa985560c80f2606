// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_HANDLE_TABLE_H
#define KOVASMGR_ADAPTERS_HANDLE_TABLE_H

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
        Terminal terminal;    // only with State::Open; stays open as long as this is held
        std::string portName; // not with State::Unknown
    };

    /// Enters an open port. A handle that the port still has is dropped: whoever held it has
    /// forgotten it.
    /// @return the new handle, or -1 when the numbers have run out.
    int Add(const std::string& portName, Terminal terminal);

    Found Find(int handle) const;

    /// The terminal that a port has open; null when it has none.
    Terminal FindPort(const std::string& portName) const;

    /// Whether the port is open and the kernel has said, within a millisecond, that there is
    /// nothing to read. Made for being asked of all handles in turn: allocates and copies nothing,
    /// and one system call serves them all.
    bool IsIdle(int handle);

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
    // Splicing needs no memory: a terminal can always be let go.
    using Terminals = std::list<Terminal>;

    struct Entry {
        std::string portName;
        Terminals terminal; // one, or none: dead
        bool deathNoticed = false;
        bool stallNoticed = false;
    };

    using Entries = std::map<int, Entry>;

    void Detach(Entries::value_type& entry, Terminals& detached);
    void DropPort(const std::string& portName, int except, Terminals& dropped);

    mutable std::mutex m_Mutex; // guards everything below
    Entries m_Entries;
    Readiness m_Readiness; // of the entries with a terminal
    int m_LastHandle = 0;
};

#endif

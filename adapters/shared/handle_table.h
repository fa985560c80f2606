// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_HANDLE_TABLE_H
#define KOVASMGR_ADAPTERS_HANDLE_TABLE_H

#include <climits>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "adapters/shared/unique_fd.h"

/// The ports that the host holds open. Handles count upwards and are never given twice.
///
/// A descriptor is shared with the calls that are inside it, and closed by the last one that lets
/// it go: nobody waits for a call, and no call finds its descriptor's number in other hands. An
/// adapter whose close() can block gives the pointer a deleter of its own.
///
/// Threads: any.
class HandleTable {
  public:
    using Descriptor = std::shared_ptr<const UniqueFd>;

    enum class State { Unknown, Dead, Open };

    struct Found {
        State state = State::Unknown;
        Descriptor descriptor; // only with State::Open; keeps the descriptor open
        std::string portName;  // not with State::Unknown
    };

    /// Enters an open port. A handle that the port still has is dropped: whoever held it has
    /// forgotten it.
    /// @return the new handle, or -1 when the numbers have run out.
    int Add(const std::string& portName, Descriptor descriptor);

    Found Find(int handle) const;

    /// Removes a handle, dead or alive.
    /// @return false when there is no such handle.
    bool Remove(int handle);

    /// Lets the descriptor go at once; the handle stays known as a dead one.
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
    struct Entry {
        std::string portName;
        Descriptor descriptor; // null: dead
        bool deathNoticed = false;
        bool stallNoticed = false;
    };

    mutable std::mutex m_Mutex; // guards everything below
    std::map<int, Entry> m_Entries;
    int m_LastHandle = 0;
};

#endif

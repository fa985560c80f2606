// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_SPY_PORT_BOOK_H
#define KOVASMGR_ADAPTERS_SPY_PORT_BOOK_H

#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>

struct KnownPort {
    std::string name;
    size_t number; // 0 onwards, in the order of their first opening
};

/// Which port a handle belongs to. A handle keeps its port when it is closed, for calls that come
/// late, until the port is opened anew.
///
/// Threads: any. What is returned stays as long as the book.
class PortBook {
  public:
    /// The port of a name, entered if it is new; null when there are too many names.
    const KnownPort* Named(const std::string& name);

    /// The port was opened and has this handle now.
    void SetHandle(const KnownPort* port, int handle);

    /// Null when no port was opened with this handle.
    const KnownPort* OfHandle(int handle) const;

  private:
    mutable std::mutex m_Mutex; // guards everything below
    std::deque<KnownPort> m_Ports;
    std::map<std::string, const KnownPort*> m_ByName;
    std::unordered_map<int, const KnownPort*> m_ByHandle;
    std::map<const KnownPort*, int> m_HandleOf;
};

#endif

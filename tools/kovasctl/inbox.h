// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_INBOX_H
#define KOVASCTL_INBOX_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

#include "tools/kovasctl/wakeup.h"

/// What the open port has delivered and nobody has fetched yet. Nothing is lost: when much has piled
/// up, the read thread is slowed down, so that the line's own flow control takes effect. It is not
/// stopped, because it holds the library's port lock, which the main thread may want.
///
/// Threads: the read thread appends, the main thread does the rest.
class Inbox {
  public:
    static constexpr size_t kMuch = size_t{1} << 20;
    static constexpr std::chrono::milliseconds kPause{500};

    /// Readable while there is something.
    int Descriptor() const { return m_Wakeup.Descriptor(); }

    std::string Take();
    void Append(const char* data, size_t length);

    /// From now on everything is thrown away, and the read thread does not wait. Before anything
    /// that waits for callbacks.
    void Stop();

  private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::string m_Data;
    bool m_IsStopped = false;
    Wakeup m_Wakeup;
};

#endif

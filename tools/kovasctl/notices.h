// SPDX-License-Identifier: MIT
#ifndef KOVASCTL_NOTICES_H
#define KOVASCTL_NOTICES_H

#include <chrono>
#include <deque>
#include <mutex>

#include "KOVASMgr.h"
#include "tools/kovasctl/snapshot.h"
#include "tools/kovasctl/wakeup.h"

/// What was attached at each notice. A device that is pulled out and comes back at once makes two,
/// so that neither is missed.
///
/// One at a time, while the library is initialised.
class Notices {
  public:
    struct Notice {
        std::chrono::system_clock::time_point time;
        Snapshot snapshot;
    };

    /// The first notice is what is attached now.
    /// @throws Failure
    Notices();
    ~Notices();
    Notices(const Notices&) = delete;
    Notices& operator=(const Notices&) = delete;

    /// Readable while there is something.
    int Descriptor() const { return m_Wakeup.Descriptor(); }

    std::deque<Notice> Take();

  private:
    static void OnNotice(_KOVAMGR_DEV_STATE_TYPE_ state);
    void Append();

    static Notices* s_Active;

    std::mutex m_Order; // held from a snapshot to its place in the queue
    std::mutex m_Mutex; // guards the queue; nothing is called with it
    std::deque<Notice> m_Queue;
    Wakeup m_Wakeup;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_JMUTEX_H
#define KOVASMGR_COMMON_JMUTEX_H

#include <pthread.h>

#include "common/thread_annotations.h"

/// A recursive and robust mutex: the owning thread may lock it again, and the death of a thread
/// that owns it hands it to the next one instead of blocking everybody for ever.
class KOVASMGR_CAPABILITY("mutex") JMutex {
  public:
    JMutex();
    ~JMutex();
    JMutex(const JMutex&) = delete;
    JMutex& operator=(const JMutex&) = delete;

    /// Makes the mutex ready for use; before, it must not be locked. A further call does nothing.
    /// @return 0, or an errno value.
    int Init();

    /// @return 0, or an errno value (EINVAL before Init). No cancellation point.
    int Lock() KOVASMGR_ACQUIRE();
    int Unlock() KOVASMGR_RELEASE();

  private:
    friend class JCondition;

    pthread_mutex_t m_Handle;
    bool m_bReady;
};

#endif

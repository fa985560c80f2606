// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_JCONDITION_H
#define KOVASMGR_COMMON_JCONDITION_H

#include <pthread.h>

#include "common/jmutex.h"

/// A condition to wait for under a JMutex that the caller holds once. Waiting is a cancellation
/// point, and the mutex is held again while the stack unwinds.
class JCondition {
  public:
    JCondition();
    ~JCondition();
    JCondition(const JCondition&) = delete;
    JCondition& operator=(const JCondition&) = delete;

    void Wait(JMutex& mutex) KOVASMGR_REQUIRES(mutex);

    /// Waits until NotifyAll or the deadline, an instant made by After. May wake early.
    /// @return false when the time is over.
    bool WaitUntil(JMutex& mutex, const timespec& deadline) KOVASMGR_REQUIRES(mutex);

    /// The instant that lies so far ahead, on the clock that WaitUntil uses.
    static timespec After(long milliseconds);

    void NotifyAll();

  private:
    pthread_cond_t m_Handle;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_JTHREAD_H
#define KOVASMGR_COMMON_JTHREAD_H

#include <pthread.h>

#include "common/jcondition.h"
#include "common/jmutex.h"

/// A thread that runs the Thread() of a derived class.
///
/// Threads: Start, Kill, Join and destruction belong to one owner, who is not the thread itself.
class JThread {
  public:
    JThread();

    /// Joins a thread that has ended. One that still runs must have been stopped before.
    virtual ~JThread();
    JThread(const JThread&) = delete;
    JThread& operator=(const JThread&) = delete;

    /// Starts the thread and waits until its Thread() has called ThreadStarted() (or has ended).
    /// @return 0, or an errno value: EBUSY while it runs, EAGAIN when the system has no thread.
    int Start();

    /// Whether Thread() has been entered and not been left. Any thread may ask.
    bool IsRunning();

    /// Cancels the thread and waits up to one second for the end of its unwinding. See
    /// KOVAMGR_Release for what can be cancelled. A thread that does not end is detached and left
    /// alone; this object must then never be destroyed.
    /// @return 0 when the thread has ended, ESRCH when there was none, ETIMEDOUT when it lives on.
    int Kill();

    /// Waits for a thread whose Thread() has been left, so that none of its code runs any more.
    /// Does nothing while it runs.
    void Join();

  protected:
    /// What the thread does. Its result is ignored.
    virtual void* Thread() = 0;

    /// Tells the starter that the thread runs; Thread() calls it first.
    void ThreadStarted();

  private:
    class RunningScope;
    static void* Enter(void* self);

    JMutex m_StateMutex;
    JCondition m_StateChanged;
    pthread_t m_Handle;
    bool m_bJoinable; // the owner's, without a lock
    bool m_bStarted KOVASMGR_GUARDED_BY(m_StateMutex);
    bool m_bRunning KOVASMGR_GUARDED_BY(m_StateMutex);
};

#endif

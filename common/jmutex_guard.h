// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_JMUTEX_GUARD_H
#define KOVASMGR_COMMON_JMUTEX_GUARD_H

#include "common/jmutex.h"

/// Holds a mutex for a scope, also through exceptions and thread cancellation.
class KOVASMGR_SCOPED_CAPABILITY JMutexGuard {
  public:
    explicit JMutexGuard(JMutex& mutex) KOVASMGR_ACQUIRE(mutex) : m_Mutex(mutex) { m_Mutex.Lock(); }
    ~JMutexGuard() KOVASMGR_RELEASE() { m_Mutex.Unlock(); }
    JMutexGuard(const JMutexGuard&) = delete;
    JMutexGuard& operator=(const JMutexGuard&) = delete;

  private:
    JMutex& m_Mutex;
};

#endif

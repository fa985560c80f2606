// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_COMMON_CANCEL_SHIELD_H
#define KOVASMGR_COMMON_CANCEL_SHIELD_H

#include <pthread.h>

/// Puts thread cancellation off for a scope that must not be left half done: a log line, the making
/// and ending of a manager.
class CancelShield {
  public:
    CancelShield() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_nBefore); }
    ~CancelShield() { pthread_setcancelstate(m_nBefore, nullptr); }
    CancelShield(const CancelShield&) = delete;
    CancelShield& operator=(const CancelShield&) = delete;

  private:
    int m_nBefore = PTHREAD_CANCEL_ENABLE;
};

#endif

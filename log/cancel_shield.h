// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_LOG_CANCEL_SHIELD_H
#define KOVASMGR_LOG_CANCEL_SHIELD_H

#include <pthread.h>

/// Puts thread cancellation off for a scope, so that a thread that is killed while it logs neither
/// leaves half a line nor a stream in an undefined state.
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

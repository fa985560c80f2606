// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_ADAPTERS_CANCEL_SHIELD_H
#define KOVASMGR_ADAPTERS_CANCEL_SHIELD_H

#include <pthread.h>

/// Keeps thread cancellation away for a scope. A cancellation that unwinds through a destructor
/// ends the process, so work that closes descriptors or joins threads is done behind a shield; it
/// must be bounded, because the thread cannot be cancelled meanwhile.
class CancelShield {
  public:
    CancelShield() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_Before); }
    ~CancelShield() { pthread_setcancelstate(m_Before, nullptr); }
    CancelShield(const CancelShield&) = delete;
    CancelShield& operator=(const CancelShield&) = delete;

  private:
    int m_Before = PTHREAD_CANCEL_ENABLE;
};

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_MANAGER_JTHREAD_T_H
#define KOVASMGR_MANAGER_JTHREAD_T_H

#include <unistd.h>

#include <ctime>

#include "common/jthread.h"

/// A thread that runs one member function of its owner.
template <typename Owner, typename Ret> class JThreadT : public JThread {
  public:
    JThreadT() = default;
    ~JThreadT() override { Stop(); }

    /// Sets what Start() will run. With a null owner the thread ends at once.
    void SetTask(Owner* owner, Ret (Owner::*member)()) {
        m_pOwner = owner;
        m_pMember = member;
    }

    /// Waits for the thread to end by itself, looking every 80 ms while no more than 4 whole
    /// seconds have passed, then kills it. Whoever wants it to end must have told it so.
    /// @return false when it lives on even so; this object must then never be destroyed.
    bool Stop() {
        const time_t start = time(nullptr);
        while (IsRunning() && time(nullptr) - start <= kWaitSeconds) {
            usleep(kPollMicroseconds);
        }
        if (IsRunning()) {
            return Kill() == 0;
        }
        Join();
        return true;
    }

  protected:
    void* Thread() override {
        ThreadStarted();
        if (m_pOwner != nullptr) {
            (m_pOwner->*m_pMember)();
        }
        return nullptr;
    }

  private:
    static constexpr time_t kWaitSeconds = 4;
    static constexpr useconds_t kPollMicroseconds = 80000;

    Owner* m_pOwner = nullptr;
    Ret (Owner::*m_pMember)() = nullptr;
};

#endif

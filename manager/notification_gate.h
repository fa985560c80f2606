// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_MANAGER_NOTIFICATION_GATE_H
#define KOVASMGR_MANAGER_NOTIFICATION_GATE_H

#include "common/jcondition.h"
#include "common/jmutex.h"

class CKOVASMgrPort;

/// The way of notifications into the manager. An adapter may notify at any time, also while a
/// manager is made or destroyed; whoever is let in keeps the manager alive until it leaves.
///
/// It counts and does not lock: a notification inside a notification must not wait for the one who
/// waits for both to leave. While the gate is closed it is refused.
///
/// Threads: any.
class NotificationGate {
  public:
    /// The one gate of the process. Never destroyed.
    static NotificationGate& Get();

    NotificationGate();
    NotificationGate(const NotificationGate&) = delete;
    NotificationGate& operator=(const NotificationGate&) = delete;

    /// Lets notifications into this manager. Waits for nothing.
    void Open(CKOVASMgrPort* manager);

    /// If it is open for this manager or somebody is still inside it: lets nobody in any more, and
    /// waits until nobody is inside. Hold no lock, and do not call it from inside.
    void Close(const CKOVASMgrPort* manager);

    /// Lets nobody in any more and forgets who is inside: they may never leave.
    void Abandon();

    /// One notification's stay inside.
    class Stay {
      public:
        explicit Stay(NotificationGate& gate);
        ~Stay();
        Stay(const Stay&) = delete;
        Stay& operator=(const Stay&) = delete;

        /// The manager entered; null when the gate is closed.
        CKOVASMgrPort* Manager() const { return m_pManager; }

      private:
        NotificationGate& m_Gate;
        CKOVASMgrPort* m_pManager;
        unsigned m_nGeneration;
    };

  private:
    JMutex m_Mutex; // nothing else is locked while it is held
    JCondition m_Emptied;
    const CKOVASMgrPort* m_pOwner KOVASMGR_GUARDED_BY(m_Mutex) = nullptr; // whose stays are counted
    CKOVASMgrPort* m_pOpenFor KOVASMGR_GUARDED_BY(m_Mutex) = nullptr;     // null while closed
    int m_nInside KOVASMGR_GUARDED_BY(m_Mutex) = 0;
    unsigned m_nGeneration KOVASMGR_GUARDED_BY(m_Mutex) = 0; // counts the abandoned
};

#endif

// SPDX-License-Identifier: MIT
#include "manager/notification_gate.h"

#include "common/jmutex_guard.h"
#include "common/never_destroyed.h"

namespace {
NeverDestroyed<NotificationGate> s_Gate;
}

NotificationGate& NotificationGate::Get() { return *s_Gate; }

NotificationGate::NotificationGate() { m_Mutex.Init(); }

void NotificationGate::Open(CKOVASMgrPort* manager) {
    JMutexGuard lock(m_Mutex);
    m_pOwner = manager;
    m_pOpenFor = manager;
}

void NotificationGate::Close(const CKOVASMgrPort* manager) {
    JMutexGuard lock(m_Mutex);
    if (m_pOwner != manager) {
        return;
    }
    m_pOpenFor = nullptr;
    while (m_nInside > 0) {
        m_Emptied.Wait(m_Mutex);
    }
}

void NotificationGate::Abandon() {
    JMutexGuard lock(m_Mutex);
    m_pOwner = nullptr;
    m_pOpenFor = nullptr;
    m_nInside = 0;
    ++m_nGeneration;
}

NotificationGate::Stay::Stay(NotificationGate& gate) : m_Gate(gate) {
    JMutexGuard lock(m_Gate.m_Mutex);
    m_pManager = m_Gate.m_pOpenFor;
    m_nGeneration = m_Gate.m_nGeneration;
    if (m_pManager != nullptr) {
        ++m_Gate.m_nInside;
    }
}

NotificationGate::Stay::~Stay() {
    JMutexGuard lock(m_Gate.m_Mutex);
    if (m_pManager != nullptr && m_nGeneration == m_Gate.m_nGeneration) {
        --m_Gate.m_nInside;
        m_Gate.m_Emptied.NotifyAll();
    }
}

// SPDX-License-Identifier: MIT
#include "common/jthread.h"

#include <cerrno>

#if defined(__GLIBC__)
#include <execinfo.h>
#endif

#include "common/jmutex_guard.h"

namespace {

constexpr long kKillWaitMs = 1000;

// The first cancellation of a thread loads the unwinder, and ends the process when there is no memory
// for that. A backtrace loads it, too, and merely stays empty.
void LoadUnwinder() {
#if defined(__GLIBC__)
    void* frame = nullptr;
    backtrace(&frame, 1);
#endif
}

} // namespace

// Clears the running state on every way out of the thread, cancellation included.
class JThread::RunningScope {
  public:
    explicit RunningScope(JThread& thread) : m_Thread(thread) {}
    ~RunningScope() {
        JMutexGuard lock(m_Thread.m_StateMutex);
        m_Thread.m_bRunning = false;
        m_Thread.m_StateChanged.NotifyAll();
    }
    RunningScope(const RunningScope&) = delete;
    RunningScope& operator=(const RunningScope&) = delete;

  private:
    JThread& m_Thread;
};

JThread::JThread() : m_Handle(), m_bJoinable(false), m_bStarted(false), m_bRunning(false) {
    m_StateMutex.Init();
}

JThread::~JThread() { Join(); }

int JThread::Start() {
    if (IsRunning()) {
        return EBUSY;
    }
    Join();
    LoadUnwinder();
    JMutexGuard lock(m_StateMutex);
    m_bStarted = false;
    m_bRunning = true;
    const int error = pthread_create(&m_Handle, nullptr, &JThread::Enter, this);
    if (error != 0) {
        m_bRunning = false;
        return error;
    }
    m_bJoinable = true;
    while (!m_bStarted && m_bRunning) {
        m_StateChanged.Wait(m_StateMutex);
    }
    return 0;
}

bool JThread::IsRunning() {
    JMutexGuard lock(m_StateMutex);
    return m_bRunning;
}

int JThread::Kill() {
    if (!m_bJoinable) {
        return ESRCH;
    }
    pthread_cancel(m_Handle);
    {
        const timespec deadline = JCondition::After(kKillWaitMs);
        JMutexGuard lock(m_StateMutex);
        while (m_bRunning && m_StateChanged.WaitUntil(m_StateMutex, deadline)) {
        }
        if (m_bRunning) {
            pthread_detach(m_Handle);
            m_bJoinable = false;
            return ETIMEDOUT;
        }
    }
    Join();
    return 0;
}

void JThread::Join() {
    if (m_bJoinable && !IsRunning()) {
        pthread_join(m_Handle, nullptr);
        m_bJoinable = false;
    }
}

void JThread::ThreadStarted() {
    JMutexGuard lock(m_StateMutex);
    m_bStarted = true;
    m_StateChanged.NotifyAll();
}

void* JThread::Enter(void* self) {
    JThread& thread = *static_cast<JThread*>(self);
    RunningScope running(thread);
    return thread.Thread();
}

// SPDX-License-Identifier: MIT
#include "adapters/shared/worker_thread.h"

#include <signal.h>

#include "adapters/shared/cancel_shield.h"

namespace {

constexpr size_t kStackSize = size_t{2} * 1024 * 1024;

// A thread inherits the signal mask of its creator.
class AllSignalsBlocked {
  public:
    AllSignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_Before);
    }
    ~AllSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }
    AllSignalsBlocked(const AllSignalsBlocked&) = delete;
    AllSignalsBlocked& operator=(const AllSignalsBlocked&) = delete;

  private:
    sigset_t m_Before{};
};

} // namespace

void* WorkerThread::Enter(void* self) {
    const CancelShield shield;
    const auto* thread = static_cast<WorkerThread*>(self);
#if defined(__linux__)
    pthread_setname_np(pthread_self(), thread->m_Name);
#endif
    thread->m_Body(thread->m_Argument);
    return nullptr;
}

int WorkerThread::Start(const char* name, Body body, void* argument) {
    m_Name = name;
    m_Body = body;
    m_Argument = argument;
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackSize);
    const AllSignalsBlocked blocked;
    const int error = pthread_create(&m_Handle, &attributes, Enter, this);
    pthread_attr_destroy(&attributes);
    m_Started = error == 0;
    return error;
}

void WorkerThread::Join() {
    if (m_Started) {
        const CancelShield shield;
        pthread_join(m_Handle, nullptr);
        m_Started = false;
    }
}

bool WorkerThread::IsSelf() const { return m_Started && pthread_equal(m_Handle, pthread_self()); }

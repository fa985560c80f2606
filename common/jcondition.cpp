// SPDX-License-Identifier: MIT
#include "common/jcondition.h"

#include <cerrno>
#include <ctime>

namespace {

#if defined(__APPLE__)
constexpr clockid_t kClock = CLOCK_REALTIME; // the only clock that its conditions know
#else
constexpr clockid_t kClock = CLOCK_MONOTONIC;
#endif

// A wait takes the mutex again, and may find that its owner died meanwhile.
void Recover(pthread_mutex_t& handle, int waitResult) {
#if !defined(__APPLE__)
    if (waitResult == EOWNERDEAD) {
        pthread_mutex_consistent(&handle);
    }
#else
    (void)handle;
    (void)waitResult;
#endif
}

} // namespace

JCondition::JCondition() : m_Handle() {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
#if !defined(__APPLE__)
    pthread_condattr_setclock(&attributes, kClock);
#endif
    pthread_cond_init(&m_Handle, &attributes);
    pthread_condattr_destroy(&attributes);
}

JCondition::~JCondition() { pthread_cond_destroy(&m_Handle); }

void JCondition::Wait(JMutex& mutex) {
    Recover(mutex.m_Handle, pthread_cond_wait(&m_Handle, &mutex.m_Handle));
}

bool JCondition::WaitUntil(JMutex& mutex, const timespec& deadline) {
    const int result = pthread_cond_timedwait(&m_Handle, &mutex.m_Handle, &deadline);
    Recover(mutex.m_Handle, result);
    return result != ETIMEDOUT;
}

timespec JCondition::After(long milliseconds) {
    timespec instant{};
    clock_gettime(kClock, &instant);
    instant.tv_sec += milliseconds / 1000;
    instant.tv_nsec += (milliseconds % 1000) * 1000000;
    if (instant.tv_nsec >= 1000000000) {
        instant.tv_sec += 1;
        instant.tv_nsec -= 1000000000;
    }
    return instant;
}

void JCondition::NotifyAll() { pthread_cond_broadcast(&m_Handle); }

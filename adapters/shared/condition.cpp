// SPDX-License-Identifier: MIT
#include "adapters/shared/condition.h"

#include <time.h>

Condition::Condition() {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
    pthread_cond_init(&m_Handle, &attributes);
    pthread_condattr_destroy(&attributes);
}

void Condition::Wait(std::unique_lock<std::mutex>& lock) {
    pthread_cond_wait(&m_Handle, lock.mutex()->native_handle());
}

void Condition::WaitUntil(std::unique_lock<std::mutex>& lock,
                          std::chrono::steady_clock::time_point when) {
    using std::chrono::duration_cast;
    const auto sinceStart = when.time_since_epoch();
    const auto seconds = duration_cast<std::chrono::seconds>(sinceStart);
    const auto rest = duration_cast<std::chrono::nanoseconds>(sinceStart - seconds);
    timespec instant{};
    instant.tv_sec = static_cast<time_t>(seconds.count());
    instant.tv_nsec = static_cast<long>(rest.count());
    pthread_cond_timedwait(&m_Handle, lock.mutex()->native_handle(), &instant);
}

void Condition::NotifyAll() { pthread_cond_broadcast(&m_Handle); }

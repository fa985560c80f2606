// SPDX-License-Identifier: MIT
#include "common/jmutex.h"

#include <cerrno>

JMutex::JMutex() : m_Handle(), m_bReady(false) {}

JMutex::~JMutex() {
    if (m_bReady) {
        pthread_mutex_destroy(&m_Handle);
    }
}

int JMutex::Init() {
    if (m_bReady) {
        return 0;
    }
    pthread_mutexattr_t attributes;
    int error = pthread_mutexattr_init(&attributes);
    if (error != 0) { // GCOVR_EXCL_LINE: glibc's attributes need nothing that could run out
        return error; // GCOVR_EXCL_LINE: likewise
    }
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
#if !defined(__APPLE__)
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
#endif
    error = pthread_mutex_init(&m_Handle, &attributes);
    pthread_mutexattr_destroy(&attributes);
    m_bReady = error == 0;
    return error;
}

int JMutex::Lock() KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
    if (!m_bReady) {
        return EINVAL;
    }
    const int error = pthread_mutex_lock(&m_Handle);
#if !defined(__APPLE__)
    if (error == EOWNERDEAD) {
        return pthread_mutex_consistent(&m_Handle);
    }
#endif
    return error;
}

int JMutex::Unlock() KOVASMGR_NO_THREAD_SAFETY_ANALYSIS {
    return m_bReady ? pthread_mutex_unlock(&m_Handle) : EINVAL;
}

// SPDX-License-Identifier: MIT
//
// A write holds a lock that a cancellation does not release.
#include <pthread.h>

#include "tests/conformance/good_adapter.h"

namespace {

pthread_mutex_t s_Mutex = PTHREAD_MUTEX_INITIALIZER;

} // namespace

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    pthread_mutex_lock(&s_Mutex);
    const int result = good::Write(handle, data, length, written);
    pthread_mutex_unlock(&s_Mutex);
    return result;
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    pthread_mutex_lock(&s_Mutex);
    const int result = good::Enumerate(which, list);
    pthread_mutex_unlock(&s_Mutex);
    return result;
}

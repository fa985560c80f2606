// SPDX-License-Identifier: MIT
//
// A registration starts a thread that never ends.
#include <pthread.h>
#include <unistd.h>

#include "tests/conformance/good_adapter.h"

namespace {

void* Sleep(void*) {
    for (;;) {
        pause();
    }
}

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    pthread_t forgotten{};
    pthread_create(&forgotten, nullptr, Sleep, nullptr);
    return good::Register(cb);
}

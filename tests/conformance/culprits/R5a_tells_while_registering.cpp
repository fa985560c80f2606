// SPDX-License-Identifier: MIT
//
// A registration tells of what is there, and waits for the end of it.
#include <thread>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    const int result = good::Register(cb);
    if (result == OS_ADAPT_OK) {
        std::thread(cb, OS_ADAPT_DEVICE_INSERT).join();
    }
    return result;
}

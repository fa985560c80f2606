// SPDX-License-Identifier: MIT
//
// The callback is remembered, and called from a later enumeration's thread.
#include <atomic>
#include <thread>

#include "tests/conformance/good_adapter.h"

namespace {

std::atomic<OS_ADAPT_STATUS_CALLBACK> s_Callback{nullptr};
std::atomic<bool> s_IsRegistered{false};
std::atomic<int> s_Count{0};

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    s_Callback = cb;
    s_IsRegistered = true;
    return good::Register(cb);
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    s_IsRegistered = false;
    return good::UnRegister();
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK && s_Count.exchange(list->nDeviceCount) != list->nDeviceCount &&
        !s_IsRegistered && s_Callback != nullptr) {
        std::thread(s_Callback.load(), OS_ADAPT_DEVICE_INSERT).join();
    }
    return result;
}

// SPDX-License-Identifier: MIT
//
// A read that finds the port gone tells it then and there.
#include <atomic>

#include "tests/conformance/good_adapter.h"

namespace {

std::atomic<OS_ADAPT_STATUS_CALLBACK> s_Callback{nullptr};
std::atomic<bool> s_HasTold{false};

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    s_Callback = cb;
    return good::Register(cb);
}

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    if (good::IsDead(handle) && !s_HasTold.exchange(true)) {
        s_Callback.load()(OS_ADAPT_DEVICE_PULLOUT);
    }
    return good::Read(handle, buffer, size, read);
}

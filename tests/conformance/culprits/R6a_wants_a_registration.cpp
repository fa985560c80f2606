// SPDX-License-Identifier: MIT
//
// Un-registration fails where nothing is registered.
#include "tests/conformance/good_adapter.h"

namespace {

bool s_IsRegistered = false;

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    s_IsRegistered = true;
    return good::Register(cb);
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    const bool wasRegistered = s_IsRegistered;
    s_IsRegistered = false;
    return wasRegistered ? good::UnRegister() : OS_ADAPT_FAILED;
}

// SPDX-License-Identifier: MIT
//
// A second registration succeeds and changes nothing.
#include "tests/conformance/good_adapter.h"

namespace {

bool s_IsRegistered = false;

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    if (s_IsRegistered) {
        return OS_ADAPT_OK;
    }
    s_IsRegistered = true;
    return good::Register(cb);
}

int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK) {
    s_IsRegistered = false;
    return good::UnRegister();
}

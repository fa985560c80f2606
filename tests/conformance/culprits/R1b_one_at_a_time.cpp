// SPDX-License-Identifier: MIT
//
// While a registration is under way, enumerations fail.
#include <unistd.h>

#include <atomic>

#include "tests/conformance/good_adapter.h"

namespace {

std::atomic<int> s_Registering{0};

} // namespace

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    ++s_Registering;
    usleep(2000);
    --s_Registering;
    return good::Register(cb);
}

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return s_Registering > 0 ? OS_ADAPT_FAILED : good::Enumerate(which, list);
}

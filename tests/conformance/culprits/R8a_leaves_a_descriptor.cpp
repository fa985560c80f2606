// SPDX-License-Identifier: MIT
//
// Each registration leaves a descriptor.
#include <fcntl.h>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    [[maybe_unused]] const int forgotten = open("/dev/null", O_RDONLY | O_CLOEXEC);
    return good::Register(cb);
}

// SPDX-License-Identifier: MIT
//
// A registration waits for the end of a notice.
#include <unistd.h>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb) {
    while (good::IsTelling(OS_ADAPT_DEVICE_PULLOUT)) {
        usleep(1000);
    }
    return good::Register(cb);
}

// SPDX-License-Identifier: MIT
//
// What comes is not told.
#include "tests/conformance/good_adapter.h"

void good::Tell(OS_ADAPT_STATUS_CALLBACK callback, _OS_ADAPT_DEVICESTATUS_TYPE status) {
    if (status == OS_ADAPT_DEVICE_PULLOUT) {
        callback(status);
    }
}

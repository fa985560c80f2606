// SPDX-License-Identifier: MIT
//
// It counts 65 devices.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        list->nDeviceCount = OS_ADAPT_MAX_DEVICES + 1;
    }
    return result;
}

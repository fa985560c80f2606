// SPDX-License-Identifier: MIT
//
// It counts 17 ports of a device.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        list->stDevice[0].nPortCount = OS_ADAPT_MAX_PORTS + 1;
    }
    return result;
}

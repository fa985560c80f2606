// SPDX-License-Identifier: MIT
//
// Inside an insertion notice another device is missing.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (good::IsInsideNotice(OS_ADAPT_DEVICE_INSERT)) {
        list->stDevice[0] = list->stDevice[1];
        list->nDeviceCount = 1;
    }
    return result;
}

// SPDX-License-Identifier: MIT
//
// A text fills its array.
#include <cstring>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        std::memset(list->stDevice[0].szDeviceText, 'x', OS_ADAPT_DEVICE_TEXT_SIZE);
    }
    return result;
}

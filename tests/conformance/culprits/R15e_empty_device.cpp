// SPDX-License-Identifier: MIT
//
// A device has no port.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        good::Add(*list, "hollow", nullptr);
    }
    return result;
}

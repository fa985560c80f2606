// SPDX-License-Identifier: MIT
//
// Two devices have a port of one name.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        good::Add(*list, "other", "anchor-0");
    }
    return result;
}

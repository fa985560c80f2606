// SPDX-License-Identifier: MIT
//
// Inside a pull-out notice a device is new.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (good::IsInsideNotice(OS_ADAPT_DEVICE_PULLOUT)) {
        good::Add(*list, "late", "late-0");
    }
    return result;
}

// SPDX-License-Identifier: MIT
//
// Inside a pull-out notice the device is still there.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (good::IsInsideNotice(OS_ADAPT_DEVICE_PULLOUT)) {
        good::Fill(*list, true);
        return OS_ADAPT_OK;
    }
    return good::Enumerate(which, list);
}

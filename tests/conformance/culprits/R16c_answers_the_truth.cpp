// SPDX-License-Identifier: MIT
//
// Inside a notice it answers what is true at that moment.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    if (good::IsInsideNotice(OS_ADAPT_DEVICE_PULLOUT)) {
        good::Fill(*list, good::IsProbeThere());
        return OS_ADAPT_OK;
    }
    return good::Enumerate(which, list);
}

// SPDX-License-Identifier: MIT
//
// Two ports have one identifier.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        list->stDevice[0].stPort[1].nPortID = list->stDevice[0].stPort[0].nPortID;
    }
    return result;
}

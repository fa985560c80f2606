// SPDX-License-Identifier: MIT
//
// Success is 0, as it is in most other interfaces.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return good::Enumerate(which, list) - OS_ADAPT_OK;
}

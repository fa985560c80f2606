// SPDX-License-Identifier: MIT
//
// A byte behind the list is written.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    const int result = good::Enumerate(which, list);
    if (result == OS_ADAPT_OK) {
        reinterpret_cast<char*>(list)[sizeof *list] = 1;
    }
    return result;
}

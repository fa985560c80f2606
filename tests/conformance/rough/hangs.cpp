// SPDX-License-Identifier: MIT
//
// No enumeration ends.
#include <unistd.h>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int, _OS_ADAPT_DEVICEPORTLIST*) {
    for (;;) {
        pause();
    }
}

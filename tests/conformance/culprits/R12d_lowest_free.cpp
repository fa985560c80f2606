// SPDX-License-Identifier: MIT
//
// The handle is the lowest that is free, as descriptors are.
#include "tests/conformance/good_adapter.h"

int good::NextHandle(int) {
    int handle = 1;
    while (IsTaken(handle)) {
        ++handle;
    }
    return handle;
}

// SPDX-License-Identifier: MIT
//
// A read waits 25 ms for bytes.
#include <unistd.h>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    const int result = good::Read(handle, buffer, size, read);
    if (result == OS_ADAPT_OK && *read == 0) {
        usleep(25000);
    }
    return result;
}

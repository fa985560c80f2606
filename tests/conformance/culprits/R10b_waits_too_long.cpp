// SPDX-License-Identifier: MIT
//
// A write waits 2.5 s for a far end that does not read.
#include <unistd.h>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    const int result = good::Write(handle, data, length, written);
    if (result == OS_ADAPT_OK && *written < length) {
        usleep(2500 * 1000);
    }
    return result;
}

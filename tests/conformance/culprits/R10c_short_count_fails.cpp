// SPDX-License-Identifier: MIT
//
// A short count is a failure.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    const int result = good::Write(handle, data, length, written);
    return result == OS_ADAPT_OK && *written < length ? OS_ADAPT_FAILED : result;
}

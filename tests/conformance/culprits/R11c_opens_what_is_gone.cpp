// SPDX-License-Identifier: MIT
//
// A port that is gone opens.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    const int result = good::Open(portName, handle);
    if (result != OS_ADAPT_OK && portName != nullptr && good::IsKnownPort(portName)) {
        *handle = 1 << 20;
        return OS_ADAPT_OK;
    }
    return result;
}

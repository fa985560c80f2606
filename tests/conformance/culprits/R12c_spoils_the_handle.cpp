// SPDX-License-Identifier: MIT
//
// A failed opening stores 0 for the handle.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    const int result = good::Open(portName, handle);
    if (result != OS_ADAPT_OK && handle != nullptr) {
        *handle = 0;
    }
    return result;
}

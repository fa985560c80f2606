// SPDX-License-Identifier: MIT
//
// Ports that nobody has ever heard of open.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    if (portName != nullptr && handle != nullptr && !good::IsKnownPort(portName)) {
        *handle = 1 << 20;
        return OS_ADAPT_OK;
    }
    return good::Open(portName, handle);
}

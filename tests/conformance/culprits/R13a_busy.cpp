// SPDX-License-Identifier: MIT
//
// A port that is open is busy.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    const bool isBusy = portName != nullptr && good::IsOpen(portName);
    return isBusy ? OS_ADAPT_FAILED : good::Open(portName, handle);
}

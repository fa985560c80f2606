// SPDX-License-Identifier: MIT
//
// A null name is looked at.
#include <cstring>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    return std::strlen(portName) == 0 ? OS_ADAPT_FAILED : good::Open(portName, handle);
}

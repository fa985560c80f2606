// SPDX-License-Identifier: MIT
//
// A handle can be closed again and again.
#include <atomic>

#include "tests/conformance/good_adapter.h"

namespace {

std::atomic<int> s_Highest{0};

} // namespace

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    const int result = good::Open(portName, handle);
    if (result == OS_ADAPT_OK) {
        s_Highest = *handle;
    }
    return result;
}

int OS_ADAPT_ClosePort(int handle) {
    const int result = good::Close(handle);
    return handle > 0 && handle <= s_Highest ? OS_ADAPT_OK : result;
}

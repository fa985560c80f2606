// SPDX-License-Identifier: MIT
//
// A port is known on the thread that opened it and nowhere else.
#include "tests/conformance/good_adapter.h"

namespace {

thread_local bool t_HasOpened = false;

} // namespace

int OS_ADAPT_OpenPort(const char* portName, int* handle) {
    t_HasOpened = true;
    return good::Open(portName, handle);
}

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    return t_HasOpened ? good::Write(handle, data, length, written) : OS_ADAPT_FAILED;
}

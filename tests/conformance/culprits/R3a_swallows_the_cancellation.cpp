// SPDX-License-Identifier: MIT
//
// A write catches everything, a cancellation too: the process is aborted.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    try {
        return good::Write(handle, data, length, written);
    } catch (...) {
        return OS_ADAPT_FAILED;
    }
}

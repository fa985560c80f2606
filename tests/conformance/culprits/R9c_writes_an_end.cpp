// SPDX-License-Identifier: MIT
//
// A read writes a zero behind its bytes, as if they were a text.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    const int result = good::Read(handle, buffer, size, read);
    if (result == OS_ADAPT_OK && *read > 0) {
        static_cast<char*>(buffer)[*read] = '\0';
    }
    return result;
}

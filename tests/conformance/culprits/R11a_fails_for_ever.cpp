// SPDX-License-Identifier: MIT
//
// Every read of a dead port fails.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    const int result = good::Read(handle, buffer, size, read);
    return good::IsDead(handle) ? OS_ADAPT_FAILED : result;
}

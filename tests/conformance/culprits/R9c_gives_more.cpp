// SPDX-License-Identifier: MIT
//
// A read gives more than it was asked for.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Read(int handle, void* buffer, long size, long* read) {
    return good::Read(handle, buffer, 2 * size, read);
}

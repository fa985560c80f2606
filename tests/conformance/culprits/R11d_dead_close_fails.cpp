// SPDX-License-Identifier: MIT
//
// Closing a dead handle fails.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_ClosePort(int handle) {
    const bool wasDead = good::IsDead(handle);
    const int result = good::Close(handle);
    return wasDead ? OS_ADAPT_FAILED : result;
}

// SPDX-License-Identifier: MIT
//
// A port lives on until the notice of its removal has ended.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Write(int handle, const void* data, long length, long* written) {
    if (good::IsDead(handle) && good::IsInsideNotice(OS_ADAPT_DEVICE_PULLOUT)) {
        *written = length;
        return OS_ADAPT_OK;
    }
    return good::Write(handle, data, length, written);
}

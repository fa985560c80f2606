// SPDX-License-Identifier: MIT
//
// Every enumeration throws.
#include <stdexcept>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int, _OS_ADAPT_DEVICEPORTLIST*) {
    throw std::runtime_error("out of devices");
}

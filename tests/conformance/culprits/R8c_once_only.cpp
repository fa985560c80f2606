// SPDX-License-Identifier: MIT
//
// It does not work when it is loaded a second time.
#include <cstdlib>

#include "tests/conformance/good_adapter.h"

namespace {

bool s_IsSecond = false;

__attribute__((constructor)) void Count() {
    s_IsSecond = std::getenv("CONFORMANCE_LOADED") != nullptr;
    setenv("CONFORMANCE_LOADED", "", 1);
}

} // namespace

int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list) {
    return s_IsSecond ? OS_ADAPT_FAILED : good::Enumerate(which, list);
}

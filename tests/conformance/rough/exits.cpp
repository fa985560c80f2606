// SPDX-License-Identifier: MIT
//
// Every enumeration ends the process, as if all were well.
#include <cstdlib>

#include "tests/conformance/good_adapter.h"

int OS_ADAPT_EnumDevicePortInfo(int, _OS_ADAPT_DEVICEPORTLIST*) { std::_Exit(0); }

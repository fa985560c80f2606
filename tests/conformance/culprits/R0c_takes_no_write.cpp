// SPDX-License-Identifier: MIT
//
// A port opens and takes nothing.
#include "tests/conformance/good_adapter.h"

int OS_ADAPT_Write(int, const void*, long, long*) { return OS_ADAPT_FAILED; }

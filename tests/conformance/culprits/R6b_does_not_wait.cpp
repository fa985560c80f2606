// SPDX-License-Identifier: MIT
//
// Un-registration returns while a notice runs.
#include "tests/conformance/good_adapter.h"

bool good::WaitsForNotice() { return false; }

// SPDX-License-Identifier: MIT
//
// Ports that are open stay so, to the end of the process.
#include "tests/conformance/good_adapter.h"

bool good::ReclaimsOpenPorts() { return false; }

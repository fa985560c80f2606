// SPDX-License-Identifier: MIT
//
// A dead port keeps its descriptor until the host closes it.
#include "tests/conformance/good_adapter.h"

bool good::ClosesDescriptorAtDeath() { return false; }

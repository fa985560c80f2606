// SPDX-License-Identifier: MIT
//
// What changes during a notice goes unnoticed.
#include "tests/conformance/good_adapter.h"

bool good::SeesChangesDuringNotice() { return false; }

// SPDX-License-Identifier: MIT
//
// Un-registration from inside a notice waits for the notice.
#include "tests/conformance/good_adapter.h"

bool good::KnowsItself() { return false; }

// SPDX-License-Identifier: MIT
//
// A port that is opened anew has two handles.
#include "tests/conformance/good_adapter.h"

bool good::DropsOldHandle() { return false; }

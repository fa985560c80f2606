// SPDX-License-Identifier: MIT
//
// A registration takes what is there then for what was answered.
#include "tests/conformance/good_adapter.h"

bool good::RemembersLastAnswer() { return false; }

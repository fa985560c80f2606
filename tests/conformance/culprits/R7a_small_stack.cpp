// SPDX-License-Identifier: MIT
//
// The notifying thread has 256 KiB of stack.
#include "tests/conformance/good_adapter.h"

size_t good::StackSize() { return size_t{256} * 1024; }

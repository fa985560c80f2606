// SPDX-License-Identifier: MIT
#include "tests/proof/failures/fault.h"
#include "tests/system/replaced_malloc.h"

bool IsAllocationRefused() { return Strikes(kNoMemory); }

// SPDX-License-Identifier: MIT
//
// Changes are seen, and not told.
#include "tests/conformance/good_adapter.h"

void good::Tell(OS_ADAPT_STATUS_CALLBACK, _OS_ADAPT_DEVICESTATUS_TYPE) {}

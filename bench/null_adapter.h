// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_NULL_ADAPTER_H
#define KOVASMGR_BENCH_NULL_ADAPTER_H

#include "OSAdapt.h"

extern "C" {
/// What the adapter without devices behind it enumerates from now on: as many devices with as many
/// ports each, called "port1" onwards.
KOVASMGR_API void NullAdapter_SetTable(int devices, int portsEach);

/// How long its enumerations have taken so far, in all; its other functions take no time.
KOVASMGR_API double NullAdapter_SecondsInside(void);
}

#endif

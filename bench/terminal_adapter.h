// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_TERMINAL_ADAPTER_H
#define KOVASMGR_BENCH_TERMINAL_ADAPTER_H

#include "OSAdapt.h"

extern "C" {
/// How many pairs of pseudo-terminals the adapter makes at its first use: as many devices with as
/// many ports each.
KOVASMGR_API void TerminalAdapter_SetTable(int devices, int portsEach);

/// The descriptor of a port's far end, in non-blocking mode; ports count from 0. After the first
/// use.
KOVASMGR_API int TerminalAdapter_FarEnd(int port);
}

#endif

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

/// How many calls of OS_ADAPT_Read there have been, also those that found nothing.
KOVASMGR_API long TerminalAdapter_Reads();

/// What OS_ADAPT_Read is in other adapters; here that counts as well.
KOVASMGR_API int TerminalAdapter_Read(int handle, void* buffer, long size, long* read);
}

#endif

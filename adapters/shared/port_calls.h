// SPDX-License-Identifier: MIT
//
// The calls on open ports that are the same for every adapter whose ports are terminals.
#ifndef KOVASMGR_ADAPTERS_PORT_CALLS_H
#define KOVASMGR_ADAPTERS_PORT_CALLS_H

#include "adapters/shared/handle_table.h"

/// What OS_ADAPT_Write, OS_ADAPT_Read and OS_ADAPT_ClosePort are to do and return, for any
/// arguments. The reason of a failure is logged once. A port that turns out to be gone is dead from
/// then on.
int WritePort(HandleTable& handles, int handle, const void* data, long length, long* written);
int ReadPort(HandleTable& handles, int handle, void* buffer, long size, long* read);
int ClosePort(HandleTable& handles, int handle);

#endif

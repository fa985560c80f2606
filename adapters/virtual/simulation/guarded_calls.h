// SPDX-License-Identifier: MIT
//
// The long way of the host's calls: past the scenario that runs. Arguments and results are those
// of the adapter's functions. What the scenario delays may be cancelled.
#ifndef KOVASMGR_ADAPTERS_VIRTUAL_GUARDED_CALLS_H
#define KOVASMGR_ADAPTERS_VIRTUAL_GUARDED_CALLS_H

#include "OSAdapt.h"

int GuardedOpen(const char* portName, int* handle);
int GuardedClose(int handle);
int GuardedWrite(int handle, const void* data, long length, long* written);
int GuardedRead(int handle, void* buffer, long size, long* read);
int GuardedEnumerate(int which, _OS_ADAPT_DEVICEPORTLIST* list);

#endif

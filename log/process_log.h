// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_LOG_PROCESS_LOG_H
#define KOVASMGR_LOG_PROCESS_LOG_H

#include "KOVASMgrWriteLog.h"
#include "common/never_destroyed.h"

/// The log of this process, made when the library is loaded.
extern NeverDestroyed<CWRITE_LOG> g_INFO_LOG;

#endif

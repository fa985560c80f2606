/* SPDX-License-Identifier: MIT */
/*
 * Paths that a host may want to show. Each function returns a buffer of the library's own, 1,024
 * bytes, always terminated; a longer path is cut at 1,023 bytes. The library itself uses neither
 * GetKOVASMgrDllPath nor GetOSAdaptDllPath: they say where the files would lie, not where they do.
 *
 * Threads: any, one at a time; the buffers are shared and unlocked.
 */
#ifndef KOVASMGR_PATHS_H
#define KOVASMGR_PATHS_H

#include "KOVASMgrExport.h"

#define KOVASMGR_PATH_SIZE 1024 /* bytes of each buffer, with terminator */

KOVASMGR_BEGIN_DECLS

/* The current directory, read anew on every call; empty when it cannot be read (deleted, say). */
KOVASMGR_API char* GetCurrentPath(void);

/* The current directory at the first call, "/" and "KOVASMgr". */
KOVASMGR_API char* GetKOVASMgrDllPath(void);

/* The current directory at the first call, "/lib", "OSAdapt" and ".dylib" (on every system). */
KOVASMGR_API char* GetOSAdaptDllPath(void);

KOVASMGR_END_DECLS

#endif

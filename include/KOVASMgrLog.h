/* SPDX-License-Identifier: MIT */
/*
 * The log file "KOVASMgr.log", for hosts and adapters that want their lines beside the library's
 * own.
 *
 * A line is "[2026-01-31 23:59:59:123] INFO:" and the message; local time, flushed at once. Until a
 * log is opened (by KOVAMGR_Init or by one of the two functions below), every line is dropped.
 * A log that is larger than 102,400 bytes when it is opened is started afresh; while open it grows
 * without a limit.
 *
 * Threads: all functions may be called by any thread and from any callback, also from static
 * destructors (lines are dropped there once the library has closed its file). The log's lock is the
 * innermost of all: nothing is called while it is held.
 */
#ifndef KOVASMGR_LOG_H
#define KOVASMGR_LOG_H

#include <stdbool.h>

#include "KOVASMgrExport.h"

#define KOVASMGR_LOG_MESSAGE_SIZE 4500 /* bytes with the terminator; more is cut off */

KOVASMGR_BEGIN_DECLS

/*
 * Opens "KOVASMgr.log" in a directory and sets its mode to 0777.
 *
 * dir  with or without a '/' (or '\') at its end, borrowed for the call. Empty: the root directory.
 *      Null: as INIT_LOG("KOVASMgr.log", false), so the current directory in a fresh process.
 *
 * Returns 0 when the path does not fit in 4,499 bytes or the file cannot be opened, else 1. The
 * same path as before: 1, and nothing is done.
 */
KOVASMGR_API int KOVASMGR_LOG_INIT(const char* dir);

/*
 * Opens a log file.
 *
 * path        borrowed for the call
 * isFullPath  true: path is the file. False: path is appended to the path in use, without a
 *             separator; in a fresh process that is the path itself.
 *
 * Returns 0 when path is null or the file cannot be opened, else 1. An unchanged path: 1, and
 * nothing is done.
 * Note: a path that is not full also refreshes the buffer of GetCurrentPath.
 * Note: the stream in use before is dropped without being closed.
 */
KOVASMGR_API int INIT_LOG(const char* path, bool isFullPath);

/*
 * Write one line at level INFO, ERRO or FATAL, printf-like. A message of more than 4,499 bytes is
 * cut there.
 *
 * Return 1 when the line was written, 0 when fmt is null or no log is open.
 */
KOVASMGR_API int INFO_LOG(const char* fmt, ...) KOVASMGR_PRINTF(1, 2);
KOVASMGR_API int ERRO_LOG(const char* fmt, ...) KOVASMGR_PRINTF(1, 2);
KOVASMGR_API int FATAL_LOG(const char* fmt, ...) KOVASMGR_PRINTF(1, 2);

/*
 * Gives the local time as "2026-01-31 23:59:59:123".
 *
 * out     at least 32 bytes, owned by the caller; null does nothing
 * format  null. Note: with any other value nothing is written to out.
 */
KOVASMGR_API void PelMgr_GetCurrentTime(char* out, const char* format);

KOVASMGR_END_DECLS

#endif

/* SPDX-License-Identifier: MIT */
/*
 * Comparing and searching byte strings of explicit length, which may contain zero bytes.
 *
 * THE CASE RULE. The pattern's byte decides: for 'B' to 'Y' and 'b' to 'y' the other byte matches
 * in either case, every other byte must be equal. Note: 'A', 'Z', 'a' and 'z' are compared exactly,
 * so that pattern "at" finds "at" and "aT" but not "At"; bytes above 127 are never folded.
 *
 * All results point into the first argument, or are null. Lengths are in bytes; a length below 1 or
 * a null pointer gives null, so comparing nothing is no match.
 *
 * Threads: any; nothing is kept.
 */
#ifndef KOVASMGR_SEARCH_H
#define KOVASMGR_SEARCH_H

#include "KOVASMgrExport.h"

KOVASMGR_BEGIN_DECLS

/* Returns s if its first n bytes match the first n bytes of pattern under the case rule. */
KOVASMGR_API const char* memcasecmp(const char* s, const char* pattern, int n);

/* Returns the leftmost place in hay where needle matches under the case rule. */
KOVASMGR_API const char* SubCaseMem(const char* hay, int hayLen, const char* needle, int needleLen);

/* Returns the leftmost place in hay where needle stands byte for byte. */
KOVASMGR_API const char* SubMem(const char* hay, int hayLen, const char* needle, int needleLen);

KOVASMGR_END_DECLS

#endif

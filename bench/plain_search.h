// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_PLAIN_SEARCH_H
#define KOVASMGR_BENCH_PLAIN_SEARCH_H

/// The plain sliding loops that the searches are measured against.
const char* PlainSubMem(const char* hay, int hayLen, const char* needle, int needleLen);
const char* PlainSubCaseMem(const char* hay, int hayLen, const char* needle, int needleLen);

/// The C library's search in the same form.
const char* LibrarySubMem(const char* hay, int hayLen, const char* needle, int needleLen);

#endif

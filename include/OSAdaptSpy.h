/* SPDX-License-Identifier: MIT */
/*
 * OSAdaptSpy: the counters that the spy adapter keeps of a host, for programs that show them.
 *
 * THE PLACE. Each host process with a spy has a private directory of mode 0700, named by its process
 * identifier, with one file "counters" of mode 0600 in it:
 *
 *     $XDG_RUNTIME_DIR/kovasmgr-spy/<pid>/counters      when that variable names a directory of the
 *                                                       user's own that nobody else can write to
 *     /tmp/kovasmgr-spy-<uid>/<pid>/counters            otherwise
 *
 * It is there from the first enumeration, opening or registration on, and goes at the
 * un-registration, at unloading or at the end of the process. A killed host leaves it behind: the
 * next spy removes it. The spy holds a lock (flock) on the directory, readers take none.
 *
 * THE FILE is one OSADAPT_SPY_COUNTERS, in the byte order of the machine, written by one process
 * while others read. Counters grow; each is whole, but they are not of one moment. A reader that
 * does not know the version, or finds another size, must not go on; one that believes nothing checks
 * counts and texts as well.
 */
#ifndef OSADAPT_SPY_H
#define OSADAPT_SPY_H

#include <stddef.h>
#include <stdint.h>

#include "KOVASMgrExport.h"

#define OSADAPT_SPY_MAGIC "KOVASPY" /* 8 bytes with its terminator; stored when all else is there */
#define OSADAPT_SPY_VERSION 1       /* grows with every change of the layout */
#define OSADAPT_SPY_KINDS 8         /* kinds of calls */
#define OSADAPT_SPY_MAX_PORTS 1024  /* ports with counters of their own */
#define OSADAPT_SPY_NAME_SIZE 256   /* bytes of a port's name, with terminator */
#define OSADAPT_SPY_PATH_SIZE 1024  /* bytes of the adapter's path, with terminator */

/* What is counted: the seven functions of an adapter, and its notices. */
typedef enum OSADAPT_SPY_KIND KOVASMGR_ENUM32 {
    OSADAPT_SPY_REGISTER = 0,
    OSADAPT_SPY_UNREGISTER = 1,
    OSADAPT_SPY_OPEN = 2,
    OSADAPT_SPY_CLOSE = 3,
    OSADAPT_SPY_WRITE = 4,
    OSADAPT_SPY_READ = 5,
    OSADAPT_SPY_ENUMERATE = 6,
    OSADAPT_SPY_NOTICE = 7
} OSADAPT_SPY_KIND;

/* The calls of one kind: 32 bytes. */
typedef struct OSADAPT_SPY_CALLS {
    uint64_t nCalls;     /* that have ended */
    uint64_t nFailures;  /* of these: any result but 30000, or ended without one */
    uint64_t nLongestNs; /* nanoseconds of the longest */
    uint64_t nTotalNs;   /* of all together */
} OSADAPT_SPY_CALLS;

/* One port: 544 bytes. */
typedef struct OSADAPT_SPY_PORT {
    char szPortName[OSADAPT_SPY_NAME_SIZE]; /* terminated, cut at 255 bytes; empty: not used */
    OSADAPT_SPY_CALLS stCalls[OSADAPT_SPY_KINDS]; /* by OSADAPT_SPY_KIND */
    uint64_t nBytesIn;                            /* that reads gave */
    uint64_t nBytesOut;                           /* that writes took */
    uint64_t nShortWrites;                        /* successes that took less than all */
    uint64_t nReserved;                           /* zero */
} OSADAPT_SPY_PORT;

/* The file: 558,688 bytes. */
typedef struct OSADAPT_SPY_COUNTERS {
    char szMagic[8];                       /* OSADAPT_SPY_MAGIC */
    uint32_t nVersion;                     /* OSADAPT_SPY_VERSION */
    uint32_t nSize;                        /* of this record */
    uint32_t nPortCount;                   /* valid entries of stPort, 0 to 1,024; grows */
    uint32_t nPortsLeftOut;                /* further ports, which are counted in stAdapter */
    int32_t nProcess;                      /* the host's identifier */
    uint32_t nReserved32;                  /* zero */
    uint64_t nStartedNs;                   /* when the counting began, on CLOCK_REALTIME */
    uint64_t nReserved[3];                 /* zero */
    char szAdapter[OSADAPT_SPY_PATH_SIZE]; /* the file that calls are passed on to */
    OSADAPT_SPY_PORT stAdapter;            /* what concerns no known port; no name */
    OSADAPT_SPY_PORT stPort[OSADAPT_SPY_MAX_PORTS]; /* in the order of their first opening */
} OSADAPT_SPY_COUNTERS;

KOVASMGR_STATIC_ASSERT(sizeof(OSADAPT_SPY_CALLS) == 32, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(sizeof(OSADAPT_SPY_PORT) == 544, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_PORT, stCalls) == 256, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_PORT, nBytesIn) == 512, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(OSADAPT_SPY_COUNTERS) == 558688, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_COUNTERS, nPortCount) == 16, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_COUNTERS, nStartedNs) == 32, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_COUNTERS, szAdapter) == 64, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_COUNTERS, stAdapter) == 1088, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(OSADAPT_SPY_COUNTERS, stPort) == 1632, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(OSADAPT_SPY_KIND) == 4, "32 bits");

#endif

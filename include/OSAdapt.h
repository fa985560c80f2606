/* SPDX-License-Identifier: MIT */
/*
 * OSAdapt: what an adapter library must export so that KOVASMgr can reach its ports.
 *
 * An adapter is a shared library named "libOSAdapt.so", alone in its directory, that exports the
 * seven functions declared below, unmangled. adapters/README.md is a guide to writing one.
 *
 * RESULTS
 *   Every function returns OS_ADAPT_OK (30000) for success; any other value is a failure, and no
 *   other value is interpreted. The host sees every failure as 20002: say why in "KOVASMgr.log"
 *   through ERRO_LOG, with what to do about it, once per cause (a failing read would otherwise log
 *   100 lines a second).
 *
 * THE CONTRACT
 * Each rule says what happens when it is broken, and who can notice.
 *
 *  R1  The seven functions may be called from any thread; one at a time, except that the
 *      registration pair and notifications may overlap with all others. A call that never returned
 *      may still be inside when a later manager calls.
 *      Broken: races inside the adapter. Noticed by: a race detector.
 *  R2  Never notify from inside one of the seven.
 *      Broken: the rescan runs in the middle of the manager's own operation. Noticed by: an adapter
 *      test.
 *  R3  A call may be ended by thread cancellation at any cancellation point: release locks by
 *      destructors or cleanup handlers, no catch (...) without rethrow, no noexcept frame.
 *      Broken: a lock stays held, or the process aborts. Noticed by: a host that releases while a
 *      call blocks.
 *  R4  Never notify while holding a lock that one of the seven takes.
 *      Broken: deadlock, because a notification calls back into OS_ADAPT_EnumDevicePortInfo.
 *      Noticed by: a host that hangs.
 *  R5  Registration never waits for a notification.
 *      Broken: deadlock, the manager registers with its port lock held. Noticed by: a host that
 *      hangs in KOVAMGR_Init.
 *  R6  Un-registration returns when no notification is running or will start; called from the
 *      notification itself it does not wait for itself; without a registration it succeeds.
 *      Broken: the manager refuses late notifications (the callback answers -1), but the library
 *      may be unloaded under a running thread. Noticed by: a crash at unload.
 *  R7  A notifying thread has at least 1 MiB of stack (a rescan keeps 286,980 bytes there).
 *      Broken: stack overflow. Noticed by: a crash at the first notification.
 *  R8  After un-registration the library can be unloaded: no thread and no descriptor survives, and
 *      it really unloads (in C++ compile with -fno-gnu-unique).
 *      Broken: descriptors and threads pile up in hosts that initialise again and again. Noticed
 *      by: counting /proc/self/fd and /proc/self/task.
 *  R9  OS_ADAPT_Read never blocks. No data is success with count 0, and the count is set on every
 *      success.
 *      Broken: every other port stalls; a count that is not set repeats the previous one. Noticed
 *      by: slow writes; duplicated data.
 *  R10 OS_ADAPT_Write ends within a bounded time (1 s unless configured). A short count is success.
 *      Broken: every other port stalls, release kills the thread. Noticed by: slow reads.
 *  R11 A dead port fails one read; its later reads succeed with count 0, its writes and opens fail
 *      at once.
 *      Broken: the manager logs each failing read, 100 times a second. Noticed by: the log.
 *  R12 Handles are never -1 and never used again while the library is loaded.
 *      Broken: -1 means closed to the manager; a reused handle reaches another port. Noticed by:
 *      data on the wrong port.
 *  R13 The manager may forget a port without closing it. Opening a port that the adapter still
 *      holds open closes the old handle and gives a new one; what is left is reclaimed when the
 *      port goes, at un-registration or at unload.
 *      Broken: a port that came back can never be opened again. Noticed by: unplugging one of two
 *      ports of a device.
 *  R14 A notifying thread marks a handle dead at once, and its descriptor is closed as soon as no
 *      call is inside it.
 *      Broken: an open descriptor keeps the node's number, and the device comes back under another
 *      name. Noticed by: unplugging while open.
 *  R15 Device names are unique, port names are unique over all devices, a device's name does not
 *      change while it is present, a device without ports is not reported, and every text is
 *      terminated within its array.
 *      Broken: devices of one name are merged, a port of a known name is ignored, an unterminated
 *      text is cut one byte short of its array. Noticed by: the host's list.
 *  R16 Inside a pull-out notification an enumeration reports only ports of the last answer that are
 *      still the same device's; inside an insertion notification it reports at least the whole last
 *      answer. A replug, a node that changes hands, a mode switch or a resynchronisation is a
 *      pull-out and then an insertion, each with a table of its own that does not change while its
 *      notification runs.
 *      Broken: the manager's scan for removals misreads a device that has no port left or whose
 *      count changed, and drops a neighbour's ports without closing them. Noticed by: a neighbour's
 *      open port that falls silent.
 *  R17 What arrives together is told together (10 ms of quiet, 40 ms at most), never across a
 *      boundary of R16. After events were lost, compare with the system and notify as in R16. No
 *      event between the first enumeration and the registration is lost.
 *      Broken: a storm of rescans, or devices that are missed. Noticed by: counting notices.
 */
#ifndef OSADAPT_H
#define OSADAPT_H

#include <stddef.h>
#include <stdint.h>

#include "KOVASMgrExport.h"

#define OS_ADAPT_OK 30000     /* the one success */
#define OS_ADAPT_FAILED 30001 /* what the adapters of this project return for any failure */

#define OS_ADAPT_MAX_DEVICES 64       /* devices that one enumeration can report */
#define OS_ADAPT_MAX_PORTS 16         /* ports of one device that it can report */
#define OS_ADAPT_DEVICE_TEXT_SIZE 128 /* bytes of a device's name and text, with terminator */
#define OS_ADAPT_PORT_NAME_SIZE 256   /* bytes of a port's name, with terminator */
#define OS_ADAPT_ENUM_ALL 4           /* the first argument of every enumeration */
#define OS_ADAPT_NO_HANDLE (-1)       /* never a handle */

/* What a notification says. */
typedef enum _OS_ADAPT_DEVICESTATUS_TYPE KOVASMGR_ENUM32 {
    OS_ADAPT_DEVICE_INSERT = 0, /* devices or ports came: the manager looks for new ports */
    OS_ADAPT_DEVICE_PULLOUT = 1 /* devices or ports went: the manager looks for vanished ports */
} _OS_ADAPT_DEVICESTATUS_TYPE;

/* One port: 264 bytes. */
typedef struct _OS_ADAPT_PORTINFO {
    char szPortName[OS_ADAPT_PORT_NAME_SIZE]; /* what OS_ADAPT_OpenPort will be given */
    int32_t nPortID; /* an identifier that the adapter proposes; 0: the manager numbers the port */
    int32_t nReserved; /* zero */
} _OS_ADAPT_PORTINFO;

/* One device: 4,484 bytes. */
typedef struct _OS_ADAPT_DEVICEPORTINFO {
    char szDeviceName[OS_ADAPT_DEVICE_TEXT_SIZE];  /* the key of the device */
    int32_t nPortCount;                            /* valid entries of stPort, 1 to 16 */
    _OS_ADAPT_PORTINFO stPort[OS_ADAPT_MAX_PORTS]; /* in the device's order */
    char szDeviceText[OS_ADAPT_DEVICE_TEXT_SIZE];  /* handed to the host as it is */
} _OS_ADAPT_DEVICEPORTINFO;

/* All devices: 286,980 bytes. */
typedef struct _OS_ADAPT_DEVICEPORTLIST {
    int32_t nDeviceCount; /* valid entries of stDevice, 0 to 64 */
    _OS_ADAPT_DEVICEPORTINFO stDevice[OS_ADAPT_MAX_DEVICES]; /* in the adapter's order */
} _OS_ADAPT_DEVICEPORTLIST;

KOVASMGR_STATIC_ASSERT(sizeof(_OS_ADAPT_PORTINFO) == 264, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(_OS_ADAPT_PORTINFO, nPortID) == 256, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(_OS_ADAPT_PORTINFO, nReserved) == 260, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(_OS_ADAPT_DEVICEPORTINFO) == 4484, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(_OS_ADAPT_DEVICEPORTINFO, nPortCount) == 128, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(_OS_ADAPT_DEVICEPORTINFO, stPort) == 132, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(_OS_ADAPT_DEVICEPORTINFO, szDeviceText) == 4356, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(_OS_ADAPT_DEVICEPORTLIST) == 286980,
                       "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(_OS_ADAPT_DEVICEPORTLIST, stDevice) == 4, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(_OS_ADAPT_DEVICESTATUS_TYPE) == 4, "32 bits");

KOVASMGR_BEGIN_DECLS

/* How the manager is notified; runs its rescan and the host's callbacks before it returns. */
typedef void (*OS_ADAPT_STATUS_CALLBACK)(_OS_ADAPT_DEVICESTATUS_TYPE status);

/* Takes the one callback to notify, replacing an earlier one. Called with the manager's port lock
 * held (R5). Notifications may start before it returns. */
KOVASMGR_API int OS_ADAPT_RegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb);

/* Forgets the callback (R6). Called without a lock; its result is ignored. */
KOVASMGR_API int OS_ADAPT_UnRegisterDeviceStateProcessCallBack(OS_ADAPT_STATUS_CALLBACK cb);

/* Opens the port of this name and stores its handle (R12, R13). On failure *handle keeps -1. */
KOVASMGR_API int OS_ADAPT_OpenPort(const char* portName, int* handle);

/* Closes a handle. A handle that is dead or unknown: success for the former, failure for the
 * latter. */
KOVASMGR_API int OS_ADAPT_ClosePort(int handle);

/* Sends up to length bytes and stores how many were taken (R10). */
KOVASMGR_API int OS_ADAPT_Write(int handle, const void* data, long length, long* written);

/* Stores up to size bytes that have arrived, and their count (R9, R11). The manager asks every 10
 * ms for at most 4,096 bytes. */
KOVASMGR_API int OS_ADAPT_Read(int handle, void* buffer, long size, long* read);

/* Fills a zeroed list with what is attached (R15, R16). which is always OS_ADAPT_ENUM_ALL. */
KOVASMGR_API int OS_ADAPT_EnumDevicePortInfo(int which, _OS_ADAPT_DEVICEPORTLIST* list);

KOVASMGR_END_DECLS

#endif

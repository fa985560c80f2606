/* SPDX-License-Identifier: MIT */
/*
 * KOVASMgr: the communication ports of the attached devices behind one C interface.
 *
 * A host initialises the library once, lists devices and ports, opens a port by its identifier,
 * writes to it, receives through callbacks and releases everything:
 *
 *     KOVAMGR_Init("/var/log/myhost");
 *     KOVAMGR_EnumeratePortInfo(&list);
 *     KOVAMGR_RegisterCommDataReadCallback(OnData, list.stDevice[0].stPort[0].nPortID);
 *     KOVAMGR_Open(list.stDevice[0].stPort[0].nPortID);
 *     ...
 *     KOVAMGR_Release();
 *
 * The library touches no device itself. KOVAMGR_Init loads an adapter library called OSAdapt (see
 * OSAdapt.h): from the current directory ("libOSAdapt.so", "OSAdapt.so" or "OSAdapt", the first
 * that exists), else from the adapter directory that was fixed when the library was built. A
 * process with raised privileges uses the latter only.
 *
 * ERRORS
 *   Every function returns an int of the 20000 series. Arguments are checked first, then whether
 *   the library is initialised, so a bad argument gives KOVAMGR_ERR_PARAM also before KOVAMGR_Init.
 *   A call that fails changes nothing unless its description says so. KOVAMGR_Write returns a byte
 *   count on success; read its description. The reason behind KOVAMGR_ERR_OSADAPT is written to
 *   "KOVASMgr.log" in the directory given to KOVAMGR_Init.
 *
 * THREADS
 *   KOVAMGR_Init and KOVAMGR_Release: one thread, while no other thread is inside any function of
 *   this header. All other functions: any thread, at any time between the two; they serialise on
 *   one lock, so a slow write delays the others.
 *
 *   [read thread]    Read callbacks run here, one at a time, with the library's port lock held.
 *                    From a read callback every function may be called except KOVAMGR_Init,
 *                    KOVAMGR_Release and the two device-state registrations.
 *   [notice thread]  Device-state callbacks run on the adapter's notifying thread with the
 *                    device-state lock held. From a device-state callback every function may be
 *                    called except KOVAMGR_Init and KOVAMGR_Release.
 *
 *   - While calling KOVAMGR_Release, an un-registration or KOVAMGR_Close, hold nothing that a
 *     callback may wait for. A read callback must not wait for a device notice.
 *   - Once an un-registration or KOVAMGR_Close has returned on another thread, no callback that it
 *     ended runs or will run. Once KOVAMGR_Release has returned, no callback runs at all (except
 *     what could not be stopped, see KOVAMGR_Release).
 *   - Callbacks must not throw C++ exceptions.
 *   - A thread that calls KOVAMGR_Init, and an adapter's notifying thread, need 1 MiB of stack:
 *     each rescan keeps an enumeration record of 286,980 bytes there.
 *   - Lock order, for hosts that combine it with their own: notification gate, device-state lock,
 *     port lock, adapter's locks, log lock.
 */
#ifndef KOVASMGR_H
#define KOVASMGR_H

#include <stddef.h>
#include <stdint.h>

#include "KOVASMgrExport.h"

/* Version of this header. The promise on compatibility is in CONTRIBUTING.md. */
#define KOVASMGR_VERSION_MAJOR 1
#define KOVASMGR_VERSION_MINOR 0 /* its second part: something was added */
#define KOVASMGR_VERSION_PATCH 0 /* its third part: something was mended */
/* One number to compare with: 10203 is version 1.2.3. */
#define KOVASMGR_VERSION                                                                           \
    (KOVASMGR_VERSION_MAJOR * 10000 + KOVASMGR_VERSION_MINOR * 100 + KOVASMGR_VERSION_PATCH)

/* Limits of the enumeration record. Texts are zero-terminated within the sizes given here. */
#define KOVAMGR_MAX_DEVICES 64       /* entries of _KOVAMGR_DEVICEINFOLIST */
#define KOVAMGR_MAX_PORTS 16         /* entries of one _KOVAMGR_DEVICEINFO */
#define KOVAMGR_DEVICE_TEXT_SIZE 128 /* bytes of a device's name and text, with terminator */
#define KOVAMGR_PORT_NAME_SIZE 256   /* bytes of a port's name, with terminator */
#define KOVAMGR_READ_SIZE 4096       /* most bytes that one read callback receives */

/* clang-format off */

/* What the functions return. */
enum KOVAMGR_RESULT KOVASMGR_ENUM32 {
    KOVAMGR_OK                   = 20000, /* success */
    KOVAMGR_ERR_PARAM            = 20001, /* bad argument, missing log directory, unknown port */
    KOVAMGR_ERR_OSADAPT          = 20002, /* the adapter or one of its operations failed; also every
                                             failure of KOVAMGR_Init after its argument checks */
    KOVAMGR_ERR_NOT_INIT         = 20003, /* KOVAMGR_Init has not succeeded */
    KOVAMGR_ERR_NO_HANDLE        = 20006, /* KOVAMGR_Write: the port is known but not open */
    KOVAMGR_ERR_THREAD           = 20009, /* internal: no read thread; hosts see 20002 */
    KOVAMGR_PORT_STATE_READY     = 20050, /* KOVAMGR_GetPortState: the library is initialised */
    KOVAMGR_PORT_STATE_NOT_READY = 20053  /* KOVAMGR_GetPortState: it is not */
};

/* The kind of a port; every port carries this one. */
enum KOVAMGR_PORT_TYPE KOVASMGR_ENUM32 {
    KOVAMGR_PORT_TYPE_COMM = 20100
};

/* What a device-state callback is told: the adapter's status plus 20200. A status that this header
 * does not name arrives as the number that it is (status 5 as 20205). */
typedef enum _KOVAMGR_DEV_STATE_TYPE_ KOVASMGR_ENUM32 {
    KOVAMGR_DEVICE_INSERT  = 20200, /* a device was inserted */
    KOVAMGR_DEVICE_PULLOUT = 20201  /* a device was pulled out */
} _KOVAMGR_DEV_STATE_TYPE_;

/* Priority of a write; it has no influence. */
typedef enum _COMMAND_PRIORITY_TYPE_ KOVASMGR_ENUM32 {
    KOVAMGR_COMMAND_PRIORITY_NORMAL = 20151
} _COMMAND_PRIORITY_TYPE_;

/* clang-format on */

/* One port of the enumeration record: 264 bytes. */
typedef struct _KOVAMGR_PORTINFO {
    char szPortName[KOVAMGR_PORT_NAME_SIZE]; /* at most 255 bytes and a terminator */
    int32_t nPortID;                         /* names the port in every port function */
    int32_t nPortType;                       /* KOVAMGR_PORT_TYPE_COMM */
} _KOVAMGR_PORTINFO;

/* One device of the enumeration record: 4,484 bytes. */
typedef struct _KOVAMGR_DEVICEINFO {
    char szDeviceName[KOVAMGR_DEVICE_TEXT_SIZE]; /* at most 127 bytes and a terminator; unique */
    uint32_t nPortCount;                         /* valid entries of stPort, 1 to 16 */
    _KOVAMGR_PORTINFO stPort[KOVAMGR_MAX_PORTS]; /* in the device's order; the rest is zero */
    char szDeviceText[KOVAMGR_DEVICE_TEXT_SIZE]; /* what the adapter says of the device */
} _KOVAMGR_DEVICEINFO;

/* The enumeration record: 286,980 bytes, too large for a small thread's stack. */
typedef struct _KOVAMGR_DEVICEINFOLIST {
    uint32_t nDeviceCount; /* devices present; can exceed 64, the entries cannot */
    _KOVAMGR_DEVICEINFO stDevice[KOVAMGR_MAX_DEVICES]; /* in order of arrival; the rest is zero */
} _KOVAMGR_DEVICEINFOLIST;

KOVASMGR_STATIC_ASSERT(sizeof(_KOVAMGR_PORTINFO) == 264, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(_KOVAMGR_PORTINFO, nPortID) == 256, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(_KOVAMGR_PORTINFO, nPortType) == 260, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(_KOVAMGR_DEVICEINFO) == 4484, "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(_KOVAMGR_DEVICEINFO, nPortCount) == 128, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(_KOVAMGR_DEVICEINFO, stPort) == 132, "layout");
KOVASMGR_STATIC_ASSERT(offsetof(_KOVAMGR_DEVICEINFO, szDeviceText) == 4356, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(_KOVAMGR_DEVICEINFOLIST) == 286980,
                       "layout is part of the interface");
KOVASMGR_STATIC_ASSERT(offsetof(_KOVAMGR_DEVICEINFOLIST, stDevice) == 4, "layout");
KOVASMGR_STATIC_ASSERT(sizeof(_KOVAMGR_DEV_STATE_TYPE_) == 4, "32 bits");
KOVASMGR_STATIC_ASSERT(sizeof(_COMMAND_PRIORITY_TYPE_) == 4, "32 bits");

KOVASMGR_BEGIN_DECLS

/*
 * Receives what a port delivered. Runs on the [read thread].
 *
 * data    the bytes, valid during the call only; a zero byte follows the last one
 * length  their count, 1 to 4096; chunks are as the adapter delivers them, no framing
 */
typedef void (*KOVAMGR_READ_CALLBACK)(void* data, int length);

/*
 * Is told that devices came or went. Runs on the [notice thread], after the library's list of ports
 * has been updated, so that KOVAMGR_EnumeratePortInfo shows the new state. One notice may stand for
 * several devices.
 */
typedef void (*KOVAMGR_DEV_STATE_CALLBACK)(_KOVAMGR_DEV_STATE_TYPE_ state);

/*
 * Initialises the library: opens the log, loads the adapter, makes the first scan for devices,
 * starts the read thread and registers for device notices.
 *
 * logDir  an existing directory for "KOVASMgr.log", borrowed for the call; its path with the file's
 *         name fits in 4,499 bytes. A log larger than 102,400 bytes is started afresh, a smaller
 *         one is appended to. The file is made readable and writable for everyone (mode 0777).
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM    logDir is null, empty or no existing directory; nothing is created
 *   KOVAMGR_ERR_OSADAPT  the log file cannot be opened
 *   KOVAMGR_OK           already initialised: nothing changes, except that a different logDir moves
 *                        the log there
 *   KOVAMGR_ERR_OSADAPT  the adapter is missing, incomplete or refuses to notify, the read thread
 *                        did not start, or memory ran out; nothing stays behind but the log file
 *                        (a second call that runs out of memory leaves the first one's work alone)
 *   KOVAMGR_OK           initialised
 *
 * Threads: one thread, while no other is inside the library. Not from a callback; called there all
 * the same, it is the plain second call above.
 * Note: a failed scan is not a failure of KOVAMGR_Init; the list of devices is then empty.
 */
KOVASMGR_API int KOVAMGR_Init(const char* logDir);

/*
 * Ends everything: stops the read thread, closes every open port, forgets devices, callbacks and
 * the adapter. KOVAMGR_Init may be called again afterwards.
 *
 * Returns KOVAMGR_OK, always, also when the library is not initialised.
 *
 * A read thread that does not leave its loop (a read callback or a read that blocks) is killed
 * after 4 to 6 seconds by thread cancellation. That reaches a thread which is blocked in a cancellation
 * point (read, write, poll, nanosleep, a wait on a condition ...). It does not reach one that spins
 * or waits for a mutex or for flock, and a thread whose stack holds a catch (...) without rethrow,
 * a noexcept function or frames of another language's run time must not be cancelled at all. A
 * thread that does not die within a further second is left alone: one ERRO line in the log, its
 * ports stay open, adapter and library stay loaded, and KOVAMGR_Init builds a new manager beside
 * it. A callback that lives on in this way must not call the library any more; a device notice that
 * was under way may still end. For device-state callbacks, and for the adapter's other calls,
 * KOVAMGR_Release waits without a limit.
 *
 * Threads: one thread, while no other is inside the library. It waits for callbacks that are
 * running. Not from a callback; called there all the same, it writes one ERRO line to the log and
 * changes nothing.
 */
KOVASMGR_API int KOVAMGR_Release(void);

/*
 * Adds a device-state callback, behind those already registered.
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     cb is null
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_OK            registered, or it was registered before (it is called once all the same)
 *
 * Threads: any; not from a read callback. A callback that is added from a device-state callback is
 * called for the notice under way as well.
 */
KOVASMGR_API int KOVAMGR_RegisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb);

/*
 * Removes a device-state callback. Waits for a notice under way on another thread.
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     cb is null
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_OK            it is not registered any more, or never was
 *
 * Threads: any; not from a read callback.
 * Note: a callback that removes itself while it is called costs its successor that one notice.
 */
KOVASMGR_API int KOVAMGR_UnRegisterDeviceStateProcessCallback(KOVAMGR_DEV_STATE_CALLBACK cb);

/*
 * Adds a read callback to a port, behind those it already has. The port may be open or closed; its
 * callbacks last until they are removed or the port goes.
 *
 * port  identifier from KOVAMGR_EnumeratePortInfo, 0 or more
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     cb is null or port negative
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_ERR_PARAM     no port has this identifier
 *   KOVAMGR_OK            registered, or it was registered before (it is called once all the same)
 *
 * Threads: any, and any callback. Waits for the sweep of the read thread that is under way.
 */
KOVASMGR_API int KOVAMGR_RegisterCommDataReadCallback(KOVAMGR_READ_CALLBACK cb, int port);

/*
 * Removes a read callback from a port. A callback may remove itself; its successor is still called.
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     cb is null or port negative
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_ERR_PARAM     no port has this identifier
 *   KOVAMGR_OK            it is not registered any more, or never was
 *
 * Threads: any, and any callback. Waits for the sweep of the read thread that is under way.
 */
KOVASMGR_API int KOVAMGR_UnRegisterCommDataReadCallback(KOVAMGR_READ_CALLBACK cb, int port);

/*
 * Opens a port. The read thread polls it from then on, about every 10 ms, and discards what arrives
 * while it has no read callback: register callbacks first.
 *
 * port  identifier from KOVAMGR_EnumeratePortInfo, 0 or more
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     port is negative
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_ERR_PARAM     no port has this identifier
 *   KOVAMGR_ERR_OSADAPT   the adapter did not open it (busy, no permission, gone ...: see the log)
 *   KOVAMGR_OK            open, now or before
 *
 * Threads: any, and any callback.
 */
KOVASMGR_API int KOVAMGR_Open(int port);

/*
 * Closes a port. Its read callbacks stay registered.
 *
 * port  identifier, 0 or more
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     port is negative
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_OK            no port has this identifier, or it is not open
 *   KOVAMGR_ERR_OSADAPT   the adapter did not close it; the port still counts as open
 *   KOVAMGR_OK            closed
 *
 * Threads: any, and any callback.
 * Note: an unknown identifier is success here, unlike in KOVAMGR_Open and KOVAMGR_Write.
 */
KOVASMGR_API int KOVAMGR_Close(int port);

/*
 * Sends bytes to an open port, in one call of the adapter. A short count is not continued.
 *
 * port    identifier, 0 or more
 * data    the bytes, borrowed for the call
 * length  their count, 1 or more
 * extra   has no influence
 * result  where the reason of a -1 is stored; may be null, then nothing is stored. Written in the
 *         cases marked * only.
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM      data is null, port negative or length 0 or less
 *   KOVAMGR_ERR_NOT_INIT   not initialised
 *   -1 *                   being released: *result is KOVAMGR_ERR_NOT_INIT
 *   -1 *                   no port has this identifier: *result is KOVAMGR_ERR_PARAM
 *   KOVAMGR_ERR_NO_HANDLE  the port is not open
 *   -1 *                   the adapter failed: *result is KOVAMGR_ERR_OSADAPT
 *   0 .. length            bytes sent
 *
 * Threads: any, and any callback. Holds the port lock for as long as the adapter takes.
 * Note: byte counts and codes share one value, so that a count of 20001, 20003 or 20006 cannot be
 * told from a code. Send at most 16,384 bytes a call and the question does not arise.
 */
KOVASMGR_API int KOVAMGR_Write(int port, const void* data, long length, long extra, long* result);

/*
 * Tells whether the library is initialised. The port is not looked at, it need not exist.
 *
 * port  0 or more
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM             port is negative
 *   KOVAMGR_ERR_NOT_INIT          not initialised
 *   KOVAMGR_PORT_STATE_READY      initialised
 *   KOVAMGR_PORT_STATE_NOT_READY  being released
 *
 * Threads: any, and any callback.
 */
KOVASMGR_API int KOVAMGR_GetPortState(int port);

/*
 * Takes a snapshot of the devices and their ports.
 *
 * list  owned by the caller, 286,980 bytes; overwritten whole on success, untouched on failure
 *
 * Returns, in the order of the checks:
 *   KOVAMGR_ERR_PARAM     list is null
 *   KOVAMGR_ERR_NOT_INIT  not initialised
 *   KOVAMGR_OK            filled; with no device present the whole record is zero
 *
 * Devices beyond the 64th and ports beyond the 16th of a device are left out; nDeviceCount is the
 * full number of devices, nPortCount stops at 16. Entries show no open or closed state.
 *
 * Threads: any, and any callback. A snapshot never mixes two states, and may be stale at once.
 */
KOVASMGR_API int KOVAMGR_EnumeratePortInfo(_KOVAMGR_DEVICEINFOLIST* list);

KOVASMGR_END_DECLS

#endif

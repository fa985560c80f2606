/* SPDX-License-Identifier: MIT */
/*
 * OSAdaptLine: how a host sets the line of a serial port, for hosts that use the Linux adapter. It
 * exports the function below besides the seven that every adapter has; others do not.
 *
 * GETTING AT IT. The manager has loaded the adapter, so the host asks for the loaded one:
 *
 *     void* adapter = dlopen("libOSAdapt.so", RTLD_NOW | RTLD_NOLOAD);
 *     OSADAPT_SET_LINE set_line =
 *         adapter == NULL ? NULL : (OSADAPT_SET_LINE)dlsym(adapter, OSADAPT_SET_LINE_NAME);
 *     ...
 *     if (adapter != NULL) dlclose(adapter);  // when done with set_line, before KOVAMGR_Release
 *
 * THE TEXT. Words separated by spaces, tabs or commas, in any case, 256 bytes at most. Of words
 * that set the same, the last wins; what no word names stays as it is.
 *
 *   115200               baud rate, 1 to 4294967295; what the driver makes of it may be 3 % off
 *   8N1                  5 to 8 data bits, parity None, Even, Odd, Mark or Space, 1 or 2 stop bits
 *                        (the hardware makes 1.5 of 2 with 5 data bits)
 *   flow=none            no flow control
 *   flow=rtscts, rtscts  by RTS and CTS
 *   flow=xonxoff, xonxoff
 *                        by the characters 0x11 and 0x13, which do not pass as data then
 *   dtr=on, off, keep    DTR; keep: as the kernel leaves it, which raises it at the opening
 *   rts=on, off, keep    the same for RTS
 *   low_latency=on, off, keep
 *                        whether the driver hands bytes over at once
 *   write_timeout=1000   milliseconds that a write waits for room, 1 to 10000; all ports wait too
 *   break, break=250     a break of 250, or of 1 to 5000, milliseconds
 *
 * Without any of these a line is "115200 8N1 flow=none dtr=keep rts=keep low_latency=keep
 * write_timeout=1000". Each of the following overrides the ones before, word for word: the
 * environment variable OSADAPT_LINE, the system's file /etc/kovasmgr/linux.toml, the user's file
 * kovasmgr/linux.toml in the configuration directory, and what the host sets here.
 */
#ifndef OSADAPT_LINE_H
#define OSADAPT_LINE_H

#include "KOVASMgrExport.h"

/* The function's name, for dlsym. */
#define OSADAPT_SET_LINE_NAME "OSADAPT_SetLine"

KOVASMGR_BEGIN_DECLS

/*
 * Sets the line of a port: at once when the port is open, and at each later opening, until the
 * port's device goes or the manager is released. What was set before and is not named again stays
 * set.
 *
 * portName  the port's name as in the host's list: "/dev/ttyUSB0"
 * settings  a text as above. Null or "" forgets what was set: an open port goes back to the line
 *           that is configured for it.
 *
 * Returns, in this order:
 *   30001 (failed)   portName is null; the text has a mistake; no port of this name is there; there
 *                    is a break and the port is not open; with null or "": the configuration of the
 *                    open port has a mistake; the driver refused a setting of an open port, or its
 *                    device is gone. The reason is in "KOVASMgr.log".
 *   30000 (success)  otherwise.
 * On failure nothing is changed: the line works on as before, nothing is remembered or forgotten.
 *
 * Threads: any, also a callback's. Calls wait for each other, but not for a break, which is sent
 * last and ends early when the device goes.
 *
 * Note: a port that is closed during a break closes when the break has ended, and cannot be opened
 * before. A break is not remembered, and when it is what failed, the rest of the text holds all the
 * same. DTR, RTS and low latency that are to be kept stay as they are, also when what was set is
 * forgotten: nobody knows how the kernel had left them. What was written and has not gone out yet
 * goes out with the new settings. Where the port is not open, the driver is asked at the next
 * opening, and what it refuses then keeps the port from opening.
 */
KOVASMGR_API int OSADAPT_SetLine(const char* portName, const char* settings);

/* What dlsym gives. */
typedef int (*OSADAPT_SET_LINE)(const char* portName, const char* settings);

KOVASMGR_END_DECLS

#endif

// SPDX-License-Identifier: MIT
//
// KOVASMgr for C++17: the interface of KOVASMgr.h with objects in place of pairs of calls, and a
// callable per port in place of plain functions. Header only; link to libKOVASMgr as a C host does.
//
//     kovasmgr::Library library(".");
//     const auto info = library.List().FindPort("virtual-modem-0");
//     kovasmgr::Port port = library.Open(info->id, [](kovasmgr::ByteView bytes) { ... });
//     const kovasmgr::Written written = port.Write("ATI\r");
//     const kovasmgr::Watch watch = library.WatchDevices([](const kovasmgr::Changes& changes) { ... });
//
// OBJECTS
//   Library  from KOVAMGR_Init to KOVAMGR_Release; one at a time in a process
//   Port     an open port and what receives from it; closes it at its end. A receiver that uses its
//            own Port: see there
//   Watch    who is told of devices that come and go; is not told any more after its end
//   All are move-only. A moved-from object holds nothing; so does a default-constructed one.
//
// ERRORS
//   What makes an object throws std::system_error; everything else returns std::error_code. The
//   codes are kovasmgr::Errc: those of the library with their numbers, and three of this header's.
//
// THREADS
//   Library is made and destroyed by one thread while no other is inside the library, and not from
//   a callback. All else: any thread at any time between the two; one object is used by one thread
//   at a time, except Port::Write, which any number of threads may call.
//
//   [receiver]  The callable of a Port: runs on the library's read thread with its port lock held.
//               May do everything but make or destroy a Library and make a Watch (a Watch that is
//               destroyed there ends without waiting).
//   [watcher]   The callable of a Watch: runs on the adapter's notifying thread, one at a time.
//               May do everything but make or destroy a Library.
//
//   - Once the destructor of a Port or Watch has returned, its callable does not run and will not:
//     the destructor waits for a call under way on another thread. From inside its own callable it
//     returns at once; the callable lives until it has returned.
//   - So: while destroying a Port, a Watch or the Library, hold nothing that a callable may wait for.
//     A receiver must not wait for a watcher.
//   - An exception that leaves a receiver or a watcher ends the process by std::terminate. Thread
//     cancellation passes through, so that the library can end a receiver that hangs.
//   - Objects may outlive their Library; they hold nothing that works any more, not even when
//     another Library is made in the meantime.
#ifndef KOVASMGR_HPP
#define KOVASMGR_HPP

#include "KOVASMgr/byte_view.hpp"
#include "KOVASMgr/devices.hpp"
#include "KOVASMgr/error.hpp"
#include "KOVASMgr/library.hpp"
#include "KOVASMgr/port.hpp"
#include "KOVASMgr/watch.hpp"

#endif

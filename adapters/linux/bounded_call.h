// SPDX-License-Identifier: MIT
//
// Letting a terminal go in bounded time. The kernel waits up to half a minute for a far end that
// takes nothing, and nothing that a user may set shortens that; a thread that waits there can be
// cancelled, though.
#ifndef KOVASMGR_ADAPTERS_LINUX_BOUNDED_CALL_H
#define KOVASMGR_ADAPTERS_LINUX_BOUNDED_CALL_H

#include <chrono>

/// Makes a system call on a thread of its own, which is cancelled after the time.
/// @param call  makes one system call and nothing else: it may be ended at any instruction
/// @return false when there was no thread to be had; the call was not made then.
/// Threads: any, with cancellation disabled.
bool CallWithin(std::chrono::milliseconds time, void (*call)(void* argument), void* argument);

/// Waits until all that was written has gone out, but not longer than this.
void DrainWithin(int terminal, std::chrono::milliseconds time);

/// Lets go of the open file behind a descriptor, as closing does; what the kernel still waits for
/// after the time is given up. The descriptor stays open on an empty file, for its owner to close:
/// its number is at no moment in other hands.
/// @return false when it could not be done; closing the descriptor may take its time then.
/// Threads: any, with cancellation disabled.
bool LetGoWithin(int descriptor, std::chrono::milliseconds time);

#endif

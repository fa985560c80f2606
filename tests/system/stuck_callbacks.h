// SPDX-License-Identifier: MIT
//
// Read callbacks that do not return, and the wait until one is inside.
#ifndef KOVASMGR_TESTS_SYSTEM_STUCK_CALLBACKS_H
#define KOVASMGR_TESTS_SYSTEM_STUCK_CALLBACKS_H

/// Blocks for ever in read(2); thread cancellation reaches it.
void BlockInRead(void* data, int length);

/// Blocks for ever on a condition variable; thread cancellation reaches it.
void BlockOnCondition(void* data, int length);

/// Runs until LetGo; cannot be cancelled.
void Spin(void* data, int length);

/// Waits for a mutex until LetGo; cannot be cancelled. HoldMutex comes first.
void WaitForMutex(void* data, int length);
void HoldMutex();

/// Ends Spin and WaitForMutex.
void LetGo();

/// Waits until a callback is inside; false when none came in time.
bool WaitUntilStuck();

#endif

// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_SYSTEM_REFUSED_ALLOCATIONS_H
#define KOVASMGR_TESTS_SYSTEM_REFUSED_ALLOCATIONS_H

/// The memory of this process is handed out by refused_allocations.cpp, which can run out of it for
/// one thread while the others still get what they ask for.

/// From now on, or until it is undone, every allocation of the calling thread fails.
void RefuseAllocations(bool refuse);

/// Allocations refused so far, of all threads.
int RefusedAllocations();

#endif

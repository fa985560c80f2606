// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_SYSTEM_REPLACED_MALLOC_H
#define KOVASMGR_TESTS_SYSTEM_REPLACED_MALLOC_H

/// A program that contains replaced_malloc.cpp hands out its memory itself, and defines this: asked
/// before every allocation, on any thread, whether it must fail. Allocates nothing.
bool IsAllocationRefused();

#endif

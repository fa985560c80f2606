// SPDX-License-Identifier: MIT
#include "tests/system/replaced_malloc.h"

#include <cerrno>
#include <cstddef>

namespace {

// Operator new ends up in malloc, too.
bool IsRefused() {
    const bool isRefused = IsAllocationRefused();
    if (isRefused) {
        errno = ENOMEM;
    }
    return isRefused;
}

} // namespace

// The C library lets a program replace these, and keeps its own under other names.
extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
void* __libc_memalign(size_t alignment, size_t size);

#define REPLACES __attribute__((visibility("default")))

REPLACES void* malloc(size_t size) noexcept { return IsRefused() ? nullptr : __libc_malloc(size); }

REPLACES void* calloc(size_t count, size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_calloc(count, size);
}

REPLACES void* realloc(void* old, size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_realloc(old, size);
}

REPLACES void* aligned_alloc(size_t alignment, size_t size) noexcept {
    return IsRefused() ? nullptr : __libc_memalign(alignment, size);
}

REPLACES int posix_memalign(void** out, size_t alignment, size_t size) noexcept {
    if (IsRefused()) {
        return ENOMEM;
    }
    *out = __libc_memalign(alignment, size);
    return *out == nullptr ? ENOMEM : 0;
}
}

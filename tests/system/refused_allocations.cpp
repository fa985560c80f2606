// SPDX-License-Identifier: MIT
#include "tests/system/refused_allocations.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace {

thread_local bool t_IsRefused = false;
std::atomic<int> s_Refused{0};

// Operator new ends up in malloc, too.
bool IsRefused() {
    if (t_IsRefused) {
        ++s_Refused;
        errno = ENOMEM;
    }
    return t_IsRefused;
}

} // namespace

void RefuseAllocations(bool refuse) { t_IsRefused = refuse; }

int RefusedAllocations() { return s_Refused; }

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

// SPDX-License-Identifier: MIT
//
// In place of replaced_malloc.cpp where a sanitizer owns malloc: what C++ asks for can fail there all
// the same.
#include <cstdlib>
#include <new>

#include "tests/system/replaced_malloc.h"

#define REPLACES __attribute__((visibility("default")))

REPLACES void* operator new(std::size_t size) {
    void* const memory = IsAllocationRefused() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

REPLACES void operator delete(void* memory) noexcept { std::free(memory); }

REPLACES void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

// SPDX-License-Identifier: MIT
//
// In place of replaced_malloc.cpp where a sanitizer owns malloc and operator new: what the library's
// own objects ask for, not what they let the C++ library ask for, is led here by the linker.
#include <cstddef>
#include <new>

#include "tests/system/replaced_malloc.h"

extern "C" {

void* __real__Znwm(std::size_t size);

void* __wrap__Znwm(std::size_t size) {
    if (IsAllocationRefused()) {
        throw std::bad_alloc();
    }
    return __real__Znwm(size);
}
}

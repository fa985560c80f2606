// SPDX-License-Identifier: MIT
//
// The linker leads the library's calls of these functions here (--wrap), and those of __real_ to the
// C library. Short texts may be written by fputc or fwrite instead of fputs: the compiler chooses.
#include <pthread.h>

#include <cerrno>
#include <cstdio>

#include "tests/proof/failures/fault.h"

namespace {

// A full disk: no room for a byte, no name for a file.
bool IsDiskFull(Trouble trouble, int error = ENOSPC) {
    const bool strikes = Strikes(trouble);
    if (strikes) {
        errno = error;
    }
    return strikes;
}

} // namespace

extern "C" {

int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
FILE* __real_fopen(const char*, const char*);
int __real_fputs(const char*, FILE*);
int __real_fputc(int, FILE*);
size_t __real_fwrite(const void*, size_t, size_t, FILE*);
int __real_fflush(FILE*);

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*),
                          void* argument) {
    return Strikes(kNoThread) ? EAGAIN : __real_pthread_create(thread, attributes, run, argument);
}

FILE* __wrap_fopen(const char* path, const char* mode) {
    return IsDiskFull(kLogNotOpened) ? nullptr : __real_fopen(path, mode);
}

int __wrap_fputs(const char* text, FILE* file) {
    return IsDiskFull(kLogNotWritten) ? EOF : __real_fputs(text, file);
}

int __wrap_fputc(int character, FILE* file) {
    return IsDiskFull(kLogNotWritten) ? EOF : __real_fputc(character, file);
}

size_t __wrap_fwrite(const void* data, size_t size, size_t count, FILE* file) {
    return IsDiskFull(kLogNotWritten) ? 0 : __real_fwrite(data, size, count, file);
}

int __wrap_fflush(FILE* file) {
    return IsDiskFull(kLogNotWritten, EIO) ? EOF : __real_fflush(file);
}
}

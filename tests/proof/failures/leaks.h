// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_PROOF_FAILURES_LEAKS_H
#define KOVASMGR_TESTS_PROOF_FAILURES_LEAKS_H

#include <string>

#ifdef KOVASMGR_TEST_LEAKS
#include <sanitizer/lsan_interface.h>
#endif

/// What is lost in memory by now, as far as a sanitizer looks after it; it prints where.
inline std::string LeakText() {
#ifdef KOVASMGR_TEST_LEAKS
    return __lsan_do_recoverable_leak_check() != 0 ? "memory is lost\n" : "";
#else
    return "";
#endif
}

#endif

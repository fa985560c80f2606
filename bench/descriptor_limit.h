// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_BENCH_DESCRIPTOR_LIMIT_H
#define KOVASMGR_BENCH_DESCRIPTOR_LIMIT_H

#include <sys/resource.h>

/// As many descriptors as this process may have: a port has two.
inline void RaiseDescriptorLimit() {
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

#endif

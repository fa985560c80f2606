// SPDX-License-Identifier: MIT
#ifndef KOVASMGR_TESTS_ADAPTERS_DESCRIPTORS_USED_UP_H
#define KOVASMGR_TESTS_ADAPTERS_DESCRIPTORS_USED_UP_H

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

/// While it lives, this process can open no further descriptor.
class DescriptorsUsedUp {
  public:
    DescriptorsUsedUp() {
        getrlimit(RLIMIT_NOFILE, &m_Before);
        // Descriptors that are open stay open; the first free number is the limit.
        const int firstFree = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(firstFree);
        rlimit limit = m_Before;
        limit.rlim_cur = static_cast<rlim_t>(firstFree);
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    ~DescriptorsUsedUp() { setrlimit(RLIMIT_NOFILE, &m_Before); }
    DescriptorsUsedUp(const DescriptorsUsedUp&) = delete;
    DescriptorsUsedUp& operator=(const DescriptorsUsedUp&) = delete;

  private:
    rlimit m_Before{};
};

#endif

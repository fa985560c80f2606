// SPDX-License-Identifier: MIT
#include "tests/proof/soak/process_state.h"

#include <malloc.h>
#include <unistd.h>

#include <fstream>

#include "tests/harness/process_counts.h"

namespace {

long ResidentKb() {
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

long AllocatedKb() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
}

} // namespace

ProcessState ProcessState::Now() {
    return {ResidentKb(), AllocatedKb(), OpenDescriptors(), RunningThreads()};
}

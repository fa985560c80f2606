// SPDX-License-Identifier: MIT
#include "tests/harness/process_counts.h"

#include <filesystem>
#include <iterator>
#include <thread>

namespace {

std::size_t EntriesOf(const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

} // namespace

// The directory being read is open itself.
std::size_t OpenDescriptors() { return EntriesOf("/proc/self/fd") - 1; }

std::size_t RunningThreads() {
    // A race detector adds a thread of its own beside the first one; it is not to be counted as
    // new.
    static const bool kHasThreads = [] {
        std::thread([] {}).join();
        return true;
    }();
    return kHasThreads ? EntriesOf("/proc/self/task") : 0;
}

// SPDX-License-Identifier: MIT
#include "tests/system/settled_threads.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

std::size_t SettledThreads() {
    RunningThreads(); // the first call starts a thread, which is listed for a moment longer
    long id = 0;
    std::thread([&] { id = syscall(SYS_gettid); }).join();
    const std::string entry = "/proc/self/task/" + std::to_string(id);
    WaitUntil([&] { return !std::filesystem::exists(entry); });
    return RunningThreads();
}

bool WaitUntilThreadsAre(std::size_t count) {
    return WaitUntil([&] { return RunningThreads() == count; });
}

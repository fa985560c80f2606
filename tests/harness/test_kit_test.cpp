// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/harness/capture_stdout.h"
#include "tests/harness/log_text.h"
#include "tests/harness/process_counts.h"
#include "tests/harness/wait_until.h"

namespace {

namespace fs = std::filesystem;

TEST(TestKit, AScratchDirectoryIsTheCurrentOneWhileItLives) {
    const fs::path before = fs::current_path();
    std::string path;
    {
        const ScratchDirectory scratch("complete");
        path = scratch.Path();
        EXPECT_EQ(fs::current_path(), path);
        EXPECT_TRUE(fs::is_empty(scratch.LogDirectory()));
        EXPECT_TRUE(fs::is_regular_file("libOSAdapt.so"));
        std::ofstream("left behind") << "text";
    }
    EXPECT_EQ(fs::current_path(), before);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(fs::exists(ScratchDirectory::AdapterFile("complete"))) << "only the link went";
}

TEST(TestKit, OnlyWellFormedTimesAreMasked) {
    EXPECT_EQ(MaskTimes("[2026-01-31 23:59:59:123] INFO:x\n"), "[TIME] INFO:x\n");
    for (const std::string text : {"[2026-1-31 23:59:59:123]", "[2026-01-31 23:59:59.123]",
                                   "[2026-01-31 23:59:59:12]", "2026-01-31 23:59:59:123"}) {
        EXPECT_EQ(MaskTimes(text), text);
    }
}

TEST(TestKit, StandardOutputIsCapturedFromStdioDescriptorAndChildren) {
    CaptureStdout out;
    std::printf("one ");
    EXPECT_EQ(out.Text(), "one ");
    EXPECT_EQ(write(STDOUT_FILENO, "two ", 4), 4);
    EXPECT_EQ(std::system("printf three"), 0);
    std::printf(" four");
    EXPECT_EQ(out.Text(), "one two three four");
}

TEST(TestKit, WaitingEndsWithTheConditionOrTheBound) {
    int asked = 0;
    EXPECT_TRUE(WaitUntil([&] { return ++asked == 3; }));
    EXPECT_FALSE(WaitUntil([] { return false; }, std::chrono::milliseconds(5)));
}

TEST(TestKit, DescriptorsAndThreadsAreCounted) {
    const std::size_t descriptors = OpenDescriptors();
    std::ifstream file("/dev/null");
    EXPECT_EQ(OpenDescriptors(), descriptors + 1);
    const std::size_t threads = RunningThreads();
    std::atomic<bool> mayEnd{false};
    std::thread thread([&] { WaitUntil([&] { return mayEnd.load(); }); });
    EXPECT_EQ(RunningThreads(), threads + 1);
    mayEnd = true;
    thread.join();
}

TEST(TestKit, PartsOfATextAreCounted) {
    EXPECT_EQ(CountOf("abababa", "aba"), 3);
    EXPECT_EQ(CountOf("abc", "d"), 0);
}

} // namespace

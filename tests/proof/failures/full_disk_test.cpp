// SPDX-License-Identifier: MIT
//
// The disk under the log becomes full in the middle of a host's life, and has room again.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <fstream>
#include <system_error>

#include "tests/harness/log_text.h"
#include "tests/harness/scratch_directory.h"
#include "tests/proof/failures/faulted_run.h"
#include "tests/proof/failures/tiny_disk.h"

namespace {

const std::string kNoDisk = "no disk: ";
const std::string kLastLine = "LEAVE CKOVASMgrPort::Release()";

// Whether the first life has really lost lines.
bool IsEndLost(const std::string& directory) {
    return CountOf(FileText(directory + "/KOVASMgr.log"), kLastLine) == 0;
}

ChildReport RunOnTinyDisk() {
    const ScratchDirectory scratch;
    const std::string log = scratch.LogDirectory();
    try {
        const TinyDisk disk(log);
        // The script's lines take more than the rest of this page.
        std::ofstream(scratch.LogFile()) << std::string(3000, '=') << '\n';
        bool isEndLost = false;
        const std::string report = RunThrough({log, log, [&] { disk.Fill(); },
                                               [&] {
                                                   isEndLost = IsEndLost(log);
                                                   disk.MakeRoom();
                                               }});
        return {isEndLost, report};
    } catch (const std::system_error& error) {
        return {false, kNoDisk + error.what()};
    }
}

void LimitFiles(rlim_t bytes) {
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

ChildReport RunWithinLimit() {
    const ScratchDirectory scratch;
    const std::string log = scratch.LogDirectory();
    signal(SIGXFSZ, SIG_IGN); // a write beyond the limit fails then
    bool isEndLost = false;
    const std::string report = RunThrough({log, log, [] { LimitFiles(1000); },
                                           [&] {
                                               isEndLost = IsEndLost(log);
                                               LimitFiles(RLIM_INFINITY);
                                           }});
    return {isEndLost, report};
}

} // namespace

TEST(FullDisk, LosesLogLinesAndNothingElse) {
    const ChildReport report = ChildRun(RunOnTinyDisk).Wait();
    if (report.text.rfind(kNoDisk, 0) == 0) {
        GTEST_SKIP() << report.text;
    }
    EXPECT_EQ("", report.text);
    EXPECT_TRUE(report.isReached) << "the disk was never full";
}

TEST(FullDisk, IsLikeALogThatMayNotGrow) {
    const ChildReport report = ChildRun(RunWithinLimit).Wait();
    EXPECT_EQ("", report.text);
    EXPECT_TRUE(report.isReached) << "the limit was never met";
}

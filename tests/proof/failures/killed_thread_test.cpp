// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>

#include "KOVASMgr.h"
#include "tests/harness/scratch_directory.h"
#include "tests/harness/wait_until.h"
#include "tests/proof/failures/child_run.h"
#include "tests/proof/failures/fault.h"
#include "tests/proof/failures/inspection.h"
#include "tests/proof/failures/steered_adapter.h"

namespace {

std::atomic<bool> s_IsInside{false};
int s_Pipe[2] = {-1, -1};

// Cancellation reaches it.
void NeverReturn(void*, int) {
    s_IsInside = true;
    char byte = 0;
    while (read(s_Pipe[0], &byte, 1) != 0) {
    }
}

// Whether the callback is inside.
bool BlockReadThread(const std::string& logDirectory) {
    return KOVAMGR_Init(logDirectory.c_str()) == KOVAMGR_OK &&
           KOVAMGR_RegisterCommDataReadCallback(NeverReturn, 1) == KOVAMGR_OK &&
           KOVAMGR_Open(1) == KOVAMGR_OK && WaitUntil([] { return s_IsInside.load(); });
}

// Release kills the read thread when there is no memory left.
ChildReport RunKilled() {
    const Spared spared;
    const ScratchDirectory scratch;
    std::filesystem::create_symlink(KOVASMGR_TEST_STEERED_ADAPTER, "libOSAdapt.so");
    ChildReport report;
    report.text = pipe(s_Pipe) == 0 ? "" : "no pipe\n";
    const Holdings before = Holdings::Now();
    report.text += BlockReadThread(scratch.LogDirectory()) ? "" : "the callback is not called\n";
    ArmFault({kNoMemory, Manner::kFromThenOn, 1});
    {
        const NotSpared notSpared;
        KOVAMGR_Release();
    }
    DisarmFault();
    report.text += Difference(before);
    report.text += g_SteeredAdapter.handles[kFirstPort] == 0 ? "" : "the port stays open\n";
    return report;
}

} // namespace

TEST(AReadThread, IsKilledAlsoWithoutMemory) { EXPECT_EQ("", ChildRun(RunKilled).Wait().text); }

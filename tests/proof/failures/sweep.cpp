// SPDX-License-Identifier: MIT
#include "tests/proof/failures/sweep.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/proof/failures/child_run.h"
#include "tests/proof/failures/faulted_run.h"

namespace {

constexpr long kAtATime = 8; // a run mostly waits for the read thread
constexpr int kMostReported = 3;
constexpr long kEndless = 2000; // runs; of no kind has the script more than some hundred events

std::vector<ChildRun> Start(Fault fault, long every) {
    std::vector<ChildRun> runs;
    for (long i = 0; i < kAtATime; ++i, fault.nth += every) {
        runs.emplace_back([=] { return RunWithFault(fault); });
    }
    return runs;
}

} // namespace

long Sweep(Trouble trouble, Manner manner, const Reach& reach) {
    Fault fault{trouble, manner, 1};
    int broken = 0;
    long reached = 0;
    while (reached < reach.most.value_or(kEndless) && broken < kMostReported) {
        for (ChildRun& run : Start(fault, reach.every)) {
            const ChildReport report = run.Wait();
            EXPECT_EQ("", report.text) << fault.Text();
            broken += report.text.empty() ? 0 : 1;
            if (!report.isReached) {
                return reached;
            }
            ++reached;
            fault.nth += reach.every;
        }
    }
    EXPECT_TRUE(reach.most || reached < kEndless) << "there is no last event: " << fault.Text();
    return reached;
}

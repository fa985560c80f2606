// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/harness/figures.h"
#include "tests/proof/failures/child_run.h"
#include "tests/proof/failures/faulted_run.h"
#include "tests/proof/failures/sweep.h"

namespace {

// Reads go on for as long as a port is open; the later ones are like the first.
constexpr Reach kFirstReads{1, 16};

// Once, and from then on.
double SweepBothWays(Trouble trouble, const Reach& reach = {}) {
    const long once = Sweep(trouble, Manner::kOnce, reach);
    const long lasting = Sweep(trouble, Manner::kFromThenOn, reach);
    EXPECT_LT(4, once);
    EXPECT_LT(4, lasting);
    return static_cast<double>(once);
}

} // namespace

TEST(EveryAdapterCall, MayFail) {
    NoteFigure("failures.adapter_calls", SweepBothWays(kAdapterFails));
}

TEST(EveryAdapterCall, MayThrowAnException) {
    NoteFigure("failures.adapter_calls_that_throw", SweepBothWays(kAdapterThrows));
}

TEST(EveryAdapterCall, MayThrowForWantOfMemory) {
    NoteFigure("failures.adapter_calls_without_memory", SweepBothWays(kAdapterBadAlloc));
}

TEST(EveryAdapterRead, MayFail) {
    NoteFigure("failures.adapter_reads", SweepBothWays(kAdapterReadFails, kFirstReads));
}

// Nothing stands between it and the end of the read thread: an adapter must not throw there.
TEST(AdapterRead, ThatThrowsEndsTheProcess) {
    ChildRun run([] { return RunWithFault({kAdapterReadThrows, Manner::kOnce, 1}); });
    EXPECT_EQ("ended by signal 6\n", run.Wait().text);
}

// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/harness/figures.h"
#include "tests/proof/failures/sweep.h"

TEST(EveryThreadStart, MayFail) {
    const long once = Sweep(kNoThread, Manner::kOnce);
    const long lasting = Sweep(kNoThread, Manner::kFromThenOn);
    EXPECT_EQ(1, once) << "the read thread";
    EXPECT_EQ(1, lasting);
    NoteFigure("failures.thread_starts", static_cast<double>(once));
}

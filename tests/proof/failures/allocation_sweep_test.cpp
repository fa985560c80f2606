// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tests/harness/figures.h"
#include "tests/proof/failures/sweep.h"

TEST(EveryAllocation, IsSeenByTheMeasure) {
    ArmFault({kNoMemory, Manner::kOnce, 1});
    EXPECT_THROW(static_cast<void>(std::make_unique<int>(1)), std::bad_alloc);
    EXPECT_NO_THROW(static_cast<void>(std::make_unique<int>(1)));
    DisarmFault();
    EXPECT_EQ(1, StrikeCount());
}

TEST(EveryAllocation, MayFailOnce) {
    const long allocations = Sweep(kNoMemory, Manner::kOnce);
    EXPECT_LT(10, allocations);
    NoteFigure("failures.allocations", static_cast<double>(allocations));
}

TEST(EveryAllocation, MayFailWithAllLaterOnes) {
    const long allocations = Sweep(kNoMemory, Manner::kFromThenOn);
    EXPECT_LT(10, allocations);
    NoteFigure("failures.allocations_and_all_later", static_cast<double>(allocations));
}

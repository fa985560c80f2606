// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/harness/figures.h"
#include "tests/proof/failures/sweep.h"

namespace {

// A line is written in seven calls, so that five reach every one of them in turn.
#ifdef KOVASMGR_TEST_SANITIZED
constexpr Reach kReach{5};
constexpr long kFewestCalls = 20;
#else
constexpr Reach kReach;
constexpr long kFewestCalls = 100;
#endif

} // namespace

TEST(EveryOpeningOfTheLog, MayFail) {
    const long once = Sweep(kLogNotOpened, Manner::kOnce);
    const long lasting = Sweep(kLogNotOpened, Manner::kFromThenOn);
    EXPECT_EQ(2, once) << "to look at its size, and to write";
    EXPECT_EQ(2, lasting);
    NoteFigure("failures.log_openings", static_cast<double>(once));
}

TEST(EveryWriteOfTheLog, MayFailOnce) {
    const long calls = Sweep(kLogNotWritten, Manner::kOnce, kReach);
    EXPECT_LT(kFewestCalls, calls);
    NoteFigure("failures.log_calls", static_cast<double>(calls));
}

TEST(EveryWriteOfTheLog, MayFailWithAllLaterOnes) {
    const long calls = Sweep(kLogNotWritten, Manner::kFromThenOn, kReach);
    EXPECT_LT(kFewestCalls, calls);
    NoteFigure("failures.log_calls_and_all_later", static_cast<double>(calls));
}

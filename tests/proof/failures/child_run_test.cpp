// SPDX-License-Identifier: MIT
//
// What a run cannot tell itself is told all the same.
#include <gtest/gtest.h>

#include <csignal>
#include <stdexcept>

#include "tests/proof/failures/child_run.h"

TEST(RunInAProcessOfItsOwn, HandsItsReportOver) {
    const std::string text(100000, 'x');
    ChildRun run([&] { return ChildReport{true, text}; });
    const ChildReport report = run.Wait();
    EXPECT_TRUE(report.isReached);
    EXPECT_EQ(text, report.text);
}

TEST(RunInAProcessOfItsOwn, NeedNotReachItsFault) {
    const ChildReport report = ChildRun([] { return ChildReport(); }).Wait();
    EXPECT_FALSE(report.isReached);
    EXPECT_EQ("", report.text);
}

TEST(RunInAProcessOfItsOwn, MayCrash) {
    const auto crash = [] {
        raise(SIGKILL);
        return ChildReport();
    };
    EXPECT_EQ("ended by signal 9\n", ChildRun(crash).Wait().text);
}

TEST(RunInAProcessOfItsOwn, MayThrow) {
    const auto fail = []() -> ChildReport { throw std::runtime_error("no reason"); };
    EXPECT_EQ("ended by an exception: no reason\n", ChildRun(fail).Wait().text);
}

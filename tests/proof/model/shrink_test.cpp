// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/proof/model/shrink.h"

namespace {

using namespace model;

Sequence Opens(int count) {
    Sequence sequence(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        sequence[static_cast<std::size_t>(i)].kind = Kind::kOpen;
        sequence[static_cast<std::size_t>(i)].number = i;
    }
    return sequence;
}

bool Has(const Sequence& sequence, int number) {
    return std::any_of(sequence.begin(), sequence.end(),
                       [&](const Operation& operation) { return operation.number == number; });
}

TEST(Shrink, LeavesWhatTheFailureNeeds) {
    const Sequence shrunk = Shrink(Opens(100), [](const Sequence& sequence) {
        return Has(sequence, 17) && Has(sequence, 80);
    });
    EXPECT_EQ("  1. open 17\n  2. open 80\n", Describe(shrunk));
}

TEST(Shrink, KeepsASequenceThatNeedsEveryStep) {
    const auto isWhole = [](const Sequence& sequence) { return sequence.size() == 7; };
    EXPECT_EQ(7U, Shrink(Opens(7), isWhole).size());
}

} // namespace

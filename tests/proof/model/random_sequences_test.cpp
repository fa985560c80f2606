// SPDX-License-Identifier: MIT
//
// Random sequences on the manager and on its model. The first number of a case's seeds is fixed, so
// that every run does the same; KOVASMGR_MODEL_SEED moves all of them on, KOVASMGR_MODEL_SEQUENCES
// is how many each case runs.
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/harness/figures.h"
#include "tests/proof/model/bare_run.h"
#include "tests/proof/model/decoder.h"
#include "tests/proof/model/shrink.h"

namespace {

using namespace model;

constexpr std::size_t kFewestBytes = 20;
constexpr std::size_t kMostBytes = 200;

// Each case; fewer where every step takes many times as long.
#ifndef KOVASMGR_MODEL_SEQUENCES
#define KOVASMGR_MODEL_SEQUENCES 6400
#endif

// With so many each quirk comes up.
constexpr long kEnoughForEveryQuirk = 6400;

long FromEnvironment(const char* name, long otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::atol(text);
}

std::string Report(BareRun& run, std::uint64_t seed, const Sequence& sequence) {
    const auto fails = [&](const Sequence& shorter) { return run.Compare(shorter).has_value(); };
    const Sequence shrunk = Shrink(sequence, fails);
    return "seed " + std::to_string(seed) + ", shrunk from " + std::to_string(sequence.size()) +
           " steps to " + std::to_string(shrunk.size()) + ":\n" + Describe(shrunk) +
           run.Compare(shrunk)->what;
}

// The report of the first failure; empty when there is none.
std::string RunSequences(BareRun& run, std::uint64_t firstSeed, long count) {
    for (long i = 0; i < count; ++i) {
        const std::uint64_t seed = firstSeed + static_cast<std::uint64_t>(i);
        const Sequence sequence = Decode(RandomBytes(seed, kFewestBytes, kMostBytes));
        if (run.Compare(sequence)) {
            return Report(run, seed, sequence);
        }
    }
    return "";
}

void ExpectEveryQuirk(const QuirkCounts& quirks, long sequences) {
    for (std::size_t i = 0; i < kQuirks; ++i) {
        const std::string name = NameOf(static_cast<Quirk>(i));
        EXPECT_TRUE(quirks[i] > 0 || sequences < kEnoughForEveryQuirk) << name << " was never met";
        NoteFigure("model.quirk." + name, static_cast<double>(quirks[i]));
    }
}

/// The parameter chooses the seeds.
class RandomSequences : public testing::TestWithParam<int> {};

TEST_P(RandomSequences, EndAsTheModelSaysAndMeetEveryQuirk) {
    const auto moved = static_cast<std::uint64_t>(FromEnvironment("KOVASMGR_MODEL_SEED", 0));
    const long count = FromEnvironment("KOVASMGR_MODEL_SEQUENCES", KOVASMGR_MODEL_SEQUENCES);
    const std::uint64_t firstSeed = moved + static_cast<std::uint64_t>(GetParam()) * 1'000'000;
    std::string failure;
    QuirkCounts quirks;
    long steps = 0;
    {
        BareRun run;
        failure = RunSequences(run, firstSeed, count);
        quirks = run.Quirks();
        steps = run.Steps();
    }
    ASSERT_EQ("", failure);
    NoteFigure("model.sequences", static_cast<double>(count));
    NoteFigure("model.steps", static_cast<double>(steps));
    ExpectEveryQuirk(quirks, count);
}

INSTANTIATE_TEST_SUITE_P(Of, RandomSequences, testing::Range(0, 16));

} // namespace

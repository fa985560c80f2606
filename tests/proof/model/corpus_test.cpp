// SPDX-License-Identifier: MIT
//
// What the fuzzer begins with. When the decoder has changed, model_write_corpus writes it anew.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/proof/model/bare_run.h"
#include "tests/proof/model/decoder.h"

namespace {

using namespace model;

std::vector<std::uint8_t> Input(const std::string& name) {
    std::ifstream file(KOVASMGR_MODEL_CORPUS "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

class Corpus : public testing::TestWithParam<std::size_t> {};

TEST_P(Corpus, HasAnInputThatMeetsTheQuirk) {
    const std::string name = NameOf(static_cast<Quirk>(GetParam()));
    const std::vector<std::uint8_t> bytes = Input(name);
    ASSERT_FALSE(bytes.empty()) << name;
    BareRun run;
    EXPECT_FALSE(run.Compare(Decode(bytes)));
    EXPECT_GT(run.Quirks()[GetParam()], 0) << name;
}

INSTANTIATE_TEST_SUITE_P(Of, Corpus, testing::Range(std::size_t{0}, kQuirks));

} // namespace

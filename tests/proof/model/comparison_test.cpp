// SPDX-License-Identifier: MIT
//
// Two models that are not alike: the comparison says where.
#include <gtest/gtest.h>

#include "tests/proof/model/comparison.h"
#include "tests/proof/model/file_tail.h"
#include "tests/proof/model/model.h"

namespace {

using namespace model;

Operation Make(Kind kind, int number = 0) {
    Operation operation;
    operation.kind = kind;
    operation.number = number;
    operation.text = kLogDirectory;
    return operation;
}

class Comparison : public testing::Test {
  protected:
    std::string DifferenceAfter(const Operation& operation) {
        const Sequence sequence = {Make(Kind::kPortState), operation};
        const auto difference = Compare(sequence, m_One, m_Other);
        return difference ? std::to_string(difference->step) + ": " + difference->what : "";
    }

    void Script(Subject& subject, Function function) {
        Operation script = Make(Kind::kResult, OS_ADAPT_FAILED);
        script.function = function;
        subject.Do(script);
    }

    QuirkCounts m_Quirks{};
    Model m_One{Model::Start::kScanOnly, m_Quirks};
    Model m_Other{Model::Start::kScanOnly, m_Quirks};
};

TEST_F(Comparison, OfTwoThatAreAlikeFindsNothing) {
    EXPECT_EQ("", DifferenceAfter(Make(Kind::kInit)));
}

TEST_F(Comparison, SeesAnotherResultAndItsStep) {
    m_One.Do(Make(Kind::kMissing, 2));
    m_One.Do(Make(Kind::kInit));
    m_Other.Do(Make(Kind::kInit));
    m_One.Adapter().TakeEvents();
    m_Other.Adapter().TakeEvents();
    m_One.TakeLog();
    m_Other.TakeLog();
    const std::string difference = DifferenceAfter(Make(Kind::kOpen, 1));
    EXPECT_EQ(0U, difference.find("1: after step 2, open 1\nthe result:\n20002\n")) << difference;
}

TEST_F(Comparison, SeesAnotherCallOfTheAdapter) {
    Script(m_One, Function::kEnum);
    EXPECT_NE(std::string::npos, DifferenceAfter(Make(Kind::kInit)).find("happened:\nEnum 4 = "));
}

TEST_F(Comparison, SeesAnotherLineOfTheLog) {
    m_One.Do(Make(Kind::kInit));
    m_Other.Do(Make(Kind::kInit));
    m_One.Adapter().TakeEvents();
    m_Other.Adapter().TakeEvents();
    m_One.TakeLog();
    EXPECT_NE(std::string::npos, DifferenceAfter(Make(Kind::kPortState)).find("the log:\n"));
}

TEST(MaskStamps, ReplacesWellFormedOnesAtTheBeginningOfALine) {
    EXPECT_EQ("[TIME] INFO:a [2026-01-31 23:59:59:123]\n[TIME] x\n[2026-1-31 23:59:59:123] y",
              MaskStamps("[2026-01-31 23:59:59:123] INFO:a [2026-01-31 23:59:59:123]\n"
                         "[2026-01-31 23:59:59:123] x\n[2026-1-31 23:59:59:123] y"));
}

} // namespace
